#include "core/services/MIMEType.h"

#include "base/Encoding.h"
#include "base/Text.h"

#include <algorithm>
#include <array>

namespace tesserine::mime {
namespace {

struct Row {
    std::string_view type;
    std::string_view extension;
};
constexpr std::array<Row, 32> table{{
    {"image/png", "png"},
    {"image/jpeg", "jpg"},
    {"image/gif", "gif"},
    {"image/webp", "webp"},
    {"image/tiff", "tiff"},
    {"image/bmp", "bmp"},
    {"image/heic", "heic"},
    {"image/avif", "avif"},
    {"image/svg+xml", "svg"},
    {"application/pdf", "pdf"},
    {"text/plain", "txt"},
    {"text/html", "html"},
    {"text/csv", "csv"},
    {"application/json", "json"},
    {"application/zip", "zip"},
    {"application/gzip", "gz"},
    {"audio/mpeg", "mp3"},
    {"audio/mp4", "m4a"},
    {"audio/wav", "wav"},
    {"audio/x-wav", "wav"},
    {"audio/amr", "amr"},
    {"video/mp4", "mp4"},
    {"video/quicktime", "mov"},
    {"application/msword", "doc"},
    {"application/vnd.ms-excel", "xls"},
    {"application/vnd.openxmlformats-officedocument.wordprocessingml.document", "docx"},
    {"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet", "xlsx"},
    {"application/vnd.openxmlformats-officedocument.presentationml.presentation", "pptx"},
    {"application/rtf", "rtf"},
    {"application/x-tar", "tar"},
    {"text/markdown", "md"},
    {"application/vnd.evernote.ink", "ink"},
}};

bool isTypeCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'
           || c == '/';
}

std::string brandType(std::string_view brand) {
    if (brand == "M4A " || brand == "M4B " || brand == "M4P ") return "audio/mp4";
    if (brand == "qt  ") return "video/quicktime";
    if (brand == "heic" || brand == "heix" || brand == "mif1" || brand == "msf1") {
        return "image/heic";
    }
    if (brand == "avif" || brand == "avis") return "image/avif";
    return "video/mp4";
}

bool isArchive(std::string_view type) {
    return type == "application/zip" || type == "application/gzip";
}

}  // namespace

std::string normalised(const std::optional<std::string>& declared) {
    if (!declared) return std::string(unknownType);
    std::string type = text::asciiLowercased(text::trimmed(*declared));
    type.resize(std::min(type.find(';'), type.size()));
    if (type.empty() || !std::ranges::all_of(type, isTypeCharacter)) {
        return std::string(unknownType);
    }
    return type;
}

std::optional<std::string> sniffed(std::span<const std::uint8_t> bytes) {
    using namespace std::string_view_literals;
    const std::string_view data = textOf(bytes.first(std::min<std::size_t>(bytes.size(), 16)));
    const auto at = [&](std::size_t offset, std::string_view mark) {
        return data.size() >= offset && data.substr(offset).starts_with(mark);
    };
    if (at(0, "\x89PNG"sv)) return "image/png";
    if (at(0, "\xFF\xD8\xFF"sv)) return "image/jpeg";
    if (at(0, "GIF8"sv)) return "image/gif";
    if (at(0, "%PDF"sv)) return "application/pdf";
    if (at(0, "RIFF"sv) && at(8, "WEBP"sv)) return "image/webp";
    if (at(0, "BM"sv)) return "image/bmp";
    if (at(0, "II*\0"sv) || at(0, "MM\0*"sv)) return "image/tiff";
    if (at(4, "ftyp"sv) && data.size() >= 12) return brandType(data.substr(8, 4));
    if (at(0, "ID3"sv)) return "audio/mpeg";
    if (at(0, "PK\x03\x04"sv)) return "application/zip";
    if (at(0, "\x1F\x8B"sv)) return "application/gzip";
    if (at(0, "\0\0\1\0"sv)) return "image/x-icon";
    return std::nullopt;
}

std::string ofExtension(std::string_view extension, const TypeRegistry& registry) {
    const std::string lowered = text::lowercased(extension);
    if (const auto known = registry.typeOfExtension(lowered)) {
        std::string type = text::lowercased(*known);
        if (type == "image/heif" && lowered == "heic") return "image/heic";
        if (type == "image/vnd.microsoft.icon") return "image/x-icon";
        return type;
    }
    const auto* row = std::ranges::find(table, lowered, &Row::extension);
    return std::string(row != table.end() ? row->type : unknownType);
}

std::string extensionOf(const std::string& type, const TypeRegistry& registry) {
    const auto* row = std::ranges::find(table, type, &Row::type);
    if (row != table.end()) return std::string(row->extension);
    return registry.extensionOfType(type).value_or("bin");
}

std::string chosen(const Evidence& evidence) {
    const std::string& declared = evidence.declared;
    const std::string& named = evidence.ofExtension;
    if (!evidence.sniffed) return declared != unknownType ? declared : named;

    const std::string& found = *evidence.sniffed;
    const auto saysMore = [](const std::string& type) {
        return type != unknownType && !isArchive(type);
    };
    if (isArchive(found)) {
        if (saysMore(declared)) return declared;
        return saysMore(named) ? named : found;
    }
    if (found == "image/bmp") {  // two letters that a text may begin with too
        if (declared != unknownType && !declared.starts_with("image/")) return declared;
        return named.starts_with("text/") ? named : found;
    }
    if (found == "video/mp4") {
        const bool isPrecise = declared.starts_with("audio/") || declared.starts_with("video/");
        return isPrecise ? declared : found;
    }
    return found;
}

std::string ocrStatus(std::string_view type) {
    const bool isReadable = type.starts_with("image/") || type == "application/pdf";
    return isReadable ? "pending" : "notApplicable";
}

}  // namespace tesserine::mime
