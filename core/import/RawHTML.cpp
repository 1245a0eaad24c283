#include "core/import/RawHTML.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tesserine::rawhtml {
namespace {

constexpr std::array<std::string_view, 9> rawTextElements = {
    "script", "style", "title", "textarea", "xmp", "iframe", "noembed", "noframes", "plaintext"};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::string nameAt(std::string_view html, std::size_t begin) {
    std::size_t end = begin;
    while (end < html.size() && (isLetter(html[end]) || (html[end] >= '0' && html[end] <= '9'))) {
        ++end;
    }
    return text::asciiLowercased(html.substr(begin, end - begin));
}

/// Where the tag that begins at `begin` ends, after its ">"; none when it does not.
std::optional<std::size_t> endOfTag(std::string_view html, std::size_t begin) {
    char quote = 0;
    char previous = '<';  // the last character that is no white space
    for (std::size_t i = begin + 1; i < html.size(); ++i) {
        const char c = html[i];
        if (quote != 0) {
            if (c == quote) quote = 0;
        } else if (c == '>') {
            return i + 1;
        } else if ((c == '"' || c == '\'') && previous == '=') {
            quote = c;
        }
        if (c != ' ' && c != '\t' && c != '\n') previous = c;
    }
    return std::nullopt;
}

/// Where "</name" begins at or after `from`, in any case of its letters.
std::optional<std::size_t> findEndTag(
    std::string_view html, std::size_t from, std::string_view name) {
    for (std::size_t i = html.find("</", from); i != std::string_view::npos;
         i = html.find("</", i + 2)) {
        if (nameAt(html, i + 2) == name) return i;
    }
    return std::nullopt;
}

/// The place after the construct that begins with the "<" at `begin`; none when its end is missing.
std::optional<std::size_t> endOfConstruct(std::string_view html, std::size_t begin) {
    const std::string_view rest = html.substr(begin);
    if (rest.starts_with("<!--")) {
        const std::size_t end = html.find("-->", begin + 2);
        if (end == std::string_view::npos) return std::nullopt;
        return end + 3;
    }
    const char next = rest.size() > 1 ? rest[1] : ' ';
    if (!isLetter(next) && next != '/' && next != '!' && next != '?') return begin + 1;
    const auto end = endOfTag(html, begin);
    if (!end) return std::nullopt;
    const std::string name = rawTextElement(rest);
    if (name.empty()) return end;
    const auto endTag = findEndTag(html, *end, name);
    return endTag ? endOfTag(html, *endTag) : std::nullopt;
}

std::string withTextualTags(std::string_view html) {
    std::string result;
    for (const char c : html) {
        if (c == '<') {
            result += "&lt;";
        } else {
            result += c;
        }
    }
    return result;
}

}  // namespace

std::string closed(std::string_view block) {
    std::size_t from = 0;
    for (std::size_t i = block.find('<'); i != std::string_view::npos; i = block.find('<', from)) {
        const auto end = endOfConstruct(block, i);
        if (!end) return std::string(block.substr(0, i)) + withTextualTags(block.substr(i));
        from = *end;
    }
    return std::string(block);
}

std::string rawTextElement(std::string_view tag) {
    const std::string name = nameAt(tag, 1);
    const bool isKnown = std::ranges::find(rawTextElements, name) != rawTextElements.end();
    return isKnown ? name : std::string{};
}

bool isEndTag(std::string_view tag, std::string_view name) {
    return tag.starts_with("</") && nameAt(tag, 2) == name;
}

void appendEscaped(std::string& html, std::string_view text) {
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c != '&' && c != '<' && c != '>') continue;
        html += text.substr(begin, i - begin);
        html += c == '&' ? "&amp;" : c == '<' ? "&lt;" : "&gt;";
        begin = i + 1;
    }
    html += text.substr(begin);
}

void appendAttributeEscaped(std::string& html, std::string_view text) {
    for (const char c : text) {
        if (c == '&') {
            html += "&amp;";
        } else if (c == '"') {
            html += "&quot;";
        } else if (c == '<') {
            html += "&lt;";
        } else {
            html += c;
        }
    }
}

}  // namespace tesserine::rawhtml
