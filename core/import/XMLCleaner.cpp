#include "core/import/XMLCleaner.h"

#include "base/Text.h"
#include "base/UTF8.h"

#include <algorithm>
#include <cstring>

namespace tesserine {
namespace {

/// How many bytes at the end are the beginning of a sequence that may go on.
std::size_t unfinishedSuffix(std::string_view bytes) {
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, bytes.size()); ++back) {
        const auto byte = static_cast<std::uint8_t>(bytes[bytes.size() - back]);
        if (byte < 0x80) return 0;
        if (byte < 0xC0) continue;
        const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
        return length > back ? back : 0;
    }
    return 0;
}

bool isForbidden(char c) {
    return static_cast<std::uint8_t>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

/// The place of the next byte below 0x20 from `at` on; line ends are among them. Looks at eight
/// bytes at once.
std::size_t nextControl(std::string_view text, std::size_t at) {
    constexpr std::uint64_t ones = 0x0101'0101'0101'0101;
    const auto isControl = [](char c) { return static_cast<std::uint8_t>(c) < 0x20; };
    for (; at + 8 <= text.size(); at += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, sizeof word);
        // A byte below 0x20 borrows from its highest bit, which it does not have itself.
        if (((word - ones * 0x20) & ~word & (ones * 0x80)) != 0) break;
    }
    while (at < text.size() && !isControl(text[at])) {
        ++at;
    }
    return at;
}

/// The name in the declaration, in lower case.
std::string declaredEncoding(std::string_view beginning) {
    constexpr std::string_view quotes = "\"'";
    const std::string_view declaration = beginning.substr(0, beginning.find("?>"));
    const std::size_t key = declaration.find("encoding");
    if (!declaration.starts_with("<?xml") || key == std::string_view::npos) return {};
    const std::size_t quote = declaration.find_first_of(quotes, key);
    if (quote == std::string_view::npos) return {};
    const std::string_view rest = declaration.substr(quote + 1);
    return text::asciiLowercased(rest.substr(0, rest.find_first_of(quotes)));
}

}  // namespace

std::string XMLCleaner::clean(std::string_view bytes, bool isLast) {
    replaced_ = {};
    if (encoding_ == Encoding::unknown) learnEncoding(bytes);
    if (encoding_ == Encoding::wide) return std::string(bytes);
    const bool isUTF8 = encoding_ == Encoding::utf8;
    if (isUTF8 && !isLast) bytes.remove_suffix(unfinishedSuffix(bytes));
    std::string piece(bytes);
    if (isUTF8) replaceBadUTF8(piece);
    replaceControls(piece);
    return piece;
}

/// Source: XML 1.0, appendix F.
void XMLCleaner::learnEncoding(std::string_view beginning) {
    const bool isWide = beginning.starts_with("\xFE\xFF") || beginning.starts_with("\xFF\xFE")
                        || beginning.substr(0, 2).find('\0') != std::string_view::npos;
    encodingName_ = declaredEncoding(beginning);
    const bool isUTF8 = encodingName_.empty() || encodingName_ == "utf-8";
    encoding_ = isWide ? Encoding::wide : isUTF8 ? Encoding::utf8 : Encoding::ascii;
}

void XMLCleaner::replaceBadUTF8(std::string& piece) {
    std::size_t at = utf8::cleanPrefix(piece);
    while (at < piece.size()) {
        const bool isZero = piece[at] == '\0';
        const std::size_t bad = isZero ? 1 : utf8::badPrefix(std::string_view(piece).substr(at));
        replace(piece, at, bad, isZero ? ' ' : '?');
        at += bad;
        at += utf8::cleanPrefix(std::string_view(piece).substr(at));
    }
}

void XMLCleaner::replaceControls(std::string& piece) {
    for (std::size_t at = nextControl(piece, 0); at < piece.size();
         at = nextControl(piece, at + 1)) {
        if (isForbidden(piece[at])) replace(piece, at, 1, ' ');
    }
}

void XMLCleaner::replace(std::string& piece, std::size_t at, std::size_t count, char by) {
    std::fill_n(piece.begin() + static_cast<std::ptrdiff_t>(at), count, by);
    const bool isFirst = replaced_.begin == replaced_.end;
    replaced_.begin = isFirst ? at : std::min(replaced_.begin, at);
    replaced_.end = isFirst ? at + count : std::max(replaced_.end, at + count);
}

}  // namespace tesserine
