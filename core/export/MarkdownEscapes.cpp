#include "core/export/MarkdownEscapes.h"

#include "base/Text.h"

#include <algorithm>
#include <cstddef>

namespace tesserine::markdown {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::string_view noBreakSpace = "\u00A0";

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWord(char c) { return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// The character at `index`, or `otherwise` outside of `text`.
char at(std::string_view text, std::size_t index, char otherwise) {
    return index < text.size() ? text[index] : otherwise;
}

/// Whether a character reference stands in front of `text`, which begins with "&".
bool beginsReference(std::string_view text) {
    std::size_t end = at(text, 1, ' ') == '#' ? 2 : 1;
    const std::size_t start = end;
    while (isWord(at(text, end, ' '))) {
        ++end;
    }
    return end > start && at(text, end, ' ') == ';';
}

/// Whether "==" at `index` could begin marked text.
bool beginsMark(std::string_view text, std::size_t index) {
    const char before = index > 0 ? text[index - 1] : ' ';
    if (!text.substr(index).starts_with("==") || before == '=') return false;
    const char after = at(text, index + 2, '*');
    return after != '=' && after != ' ' && !(isWord(before) && isWord(after));
}

/// Whether the character at `index` makes a link of the bare address it stands in.
bool joinsAddress(std::string_view text, std::size_t index) {
    const auto isBehind = [&](std::string_view word) {
        const std::size_t start = index - std::min(index, word.size());
        return text::asciiLowercased(text.substr(start, index - start)) == word;
    };
    switch (text[index]) {
    case ':':
        return text.substr(index).starts_with("://")
               && (isBehind("http") || isBehind("https") || isBehind("ftp"));
    case '.': return isBehind("www");
    case '@': return index > 0 && text[index - 1] != ' ' && isWord(at(text, index + 1, ' '));
    default: return false;
    }
}

/// Where in `line`, the beginning of a line, a backslash keeps it from being a block of another
/// kind; none when it is not.
std::size_t blockMark(std::string_view line, const TextPlace& place) {
    const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
    const char first = at(line, start, ' ');
    const char next = at(line, start + 1, ' ');
    switch (first) {
    case '>': return start;
    case '#': {
        const std::size_t end = std::min(line.find_first_not_of('#', start), line.size());
        return end - start <= 6 && at(line, end, ' ') == ' ' ? start : npos;
    }
    case '+': return next == ' ' ? start : npos;
    case '-': return next == ' ' || next == '-' || place.isAfterBreak ? start : npos;
    case '=':
    case ':':
    case '|': return place.isAfterBreak ? start : npos;
    default: break;
    }
    std::size_t end = start;
    while (isDigit(at(line, end, ' '))) {
        ++end;
    }
    const char mark = at(line, end, ' ');
    const bool isNumber = end > start && (mark == '.' || mark == ')');
    return isNumber && at(line, end + 1, ' ') == ' ' ? end : npos;
}

bool isMarkup(std::string_view text, std::size_t index, const TextPlace& place) {
    switch (text[index]) {
    case '\\':
    case '`':
    case '*':
    case '_':
    case '[':
    case ']':
    case '<': return true;
    case '~': return place.hasTildes;
    case '|': return place.isCell;
    case '&': return beginsReference(text.substr(index));
    case '=': return beginsMark(text, index);
    default: return place.hidesAddresses && joinsAddress(text, index);
    }
}

/// Appends what stands in an address or title, which may hold references and escapes.
void appendAttribute(
    std::string& output, std::string_view value, std::string_view special, bool isCell) {
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c == '\n') {
            output += "&#10;";
            continue;
        }
        const bool isReference = c == '&' && beginsReference(value.substr(i));
        if (c == '\\' || isReference || (isCell && c == '|') || special.find(c) != npos) {
            output += '\\';
        }
        output += c;
    }
}

}  // namespace

void appendEscaped(std::string& output, std::string_view text, const TextPlace& place) {
    const std::size_t block = place.isLineStart ? blockMark(text, place) : npos;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i).starts_with(noBreakSpace)) {
            output += "&nbsp;";
            i += noBreakSpace.size() - 1;
            continue;
        }
        if (i == block || isMarkup(text, i, place)) output += '\\';
        output += text[i];
    }
}

std::string codeSpan(std::string_view text) {
    const std::string fence(longestRun(text, '`') + 1, '`');
    const bool isSpace = text.find_first_not_of(' ') == npos;
    const bool isPadded = text.front() == '`' || text.back() == '`'
                          || (text.front() == ' ' && text.back() == ' ' && !isSpace);
    const std::string pad(isPadded ? 1 : 0, ' ');
    return std::string(fence).append(pad).append(text).append(pad).append(fence);
}

std::string destination(std::string_view address, std::string_view title, bool isCell) {
    const bool isBare = address.find_first_of(" ()<>") == npos && !address.empty();
    std::string output = isBare ? "(" : "(<";
    appendAttribute(output, address, isBare ? "" : "<>", isCell);
    if (!isBare) output += '>';
    if (!title.empty()) {
        output += " \"";
        appendAttribute(output, title, "\"", isCell);
        output += '"';
    }
    return output + ")";
}

std::string onOneLine(std::string_view html) {
    std::string line;
    for (const char c : html) {
        if (c == '\n') {
            line += "&#10;";
        } else {
            line += c;
        }
    }
    return line;
}

std::size_t longestRun(std::string_view text, char character) {
    std::size_t longest = 0;
    std::size_t run = 0;
    for (const char c : text) {
        run = c == character ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

}  // namespace tesserine::markdown
