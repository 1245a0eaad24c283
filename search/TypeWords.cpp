#include "base/Text.h"
#include "core/services/MIMEType.h"
#include "search/DocumentReader.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace tesserine {
namespace {

struct Family {
    std::string_view part;  ///< of a type
    std::string_view word;
};
/// The first that fits counts: spreadsheets are documents to most of these names, too.
constexpr std::array<Family, 20> families{{
    {"image/", "image"},
    {"application/pdf", "pdf"},
    {"audio/", "audio"},
    {"video/", "video"},
    {"spreadsheet", "sheet"},
    {"ms-excel", "sheet"},
    {"text/csv", "sheet"},
    {"presentation", "slides"},
    {"ms-powerpoint", "slides"},
    {"msword", "document"},
    {"wordprocessing", "document"},
    {"opendocument.text", "document"},
    {"rtf", "document"},
    {"zip", "archive"},
    {"x-tar", "archive"},
    {"7z", "archive"},
    {"x-rar", "archive"},
    {"vnd.rar", "archive"},
    {"json", "text"},
    {"text/", "text"},
}};

constexpr std::string_view unknownExtension = "bin";
constexpr std::size_t longestExtension = 8;

bool isPlain(std::string_view word) {
    return std::ranges::all_of(
        word, [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); });
}

/// What the own table knows, else what the file's name says.
std::string extension(const std::string& mimeType, const std::string& filename) {
    std::string known = mime::extensionOf(mimeType, mime::TypeRegistry{});
    if (known != unknownExtension) return known;
    std::string named = text::asciiLowercased(std::filesystem::path(filename).extension().string());
    if (!named.empty()) named.erase(0, 1);
    const bool isWord = !named.empty() && named.size() <= longestExtension && isPlain(named);
    return isWord ? named : known;
}

}  // namespace

std::vector<std::string> typeWords(const std::string& mimeType, const std::string& filename) {
    std::vector<std::string> words{extension(mimeType, filename)};
    const auto* const family = std::ranges::find_if(
        families, [&](const Family& one) { return mimeType.find(one.part) != std::string::npos; });
    if (family != families.end() && family->word != words.front()) {
        words.emplace_back(family->word);
    }
    return words;
}

}  // namespace tesserine
