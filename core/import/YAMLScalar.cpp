#include "core/import/YAMLScalar.h"

#include "base/Encoding.h"
#include "base/Text.h"
#include "base/UTF8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tesserine::yaml {
namespace {

std::string singleQuoted(std::string_view inner) {
    std::string result;
    for (std::size_t i = 0; i < inner.size(); ++i) {
        result += inner[i];
        if (inner[i] == '\'' && i + 1 < inner.size() && inner[i + 1] == '\'') ++i;
    }
    return result;
}

struct Escape {
    char letter;
    std::string_view meaning;
};

/// Source: YAML 1.2.2, section 5.7; what no text holds is left out.
constexpr std::array escapes = {
    Escape{'n', "\n"},
    Escape{'t', "\t"},
    Escape{'r', "\n"},
    Escape{'"', "\""},
    Escape{'/', "/"},
    Escape{'\\', "\\"},
    Escape{' ', " "},
    Escape{'N', "\n"},
    Escape{'_', "\u00A0"},
    Escape{'L', "\u2028"},
    Escape{'P', "\u2029"},
};

/// The character that some hexadecimal digits name.
void appendCharacter(std::string& text, std::string_view digits) {
    const auto bytes = fromHex(digits);
    char32_t scalar = 0;
    if (bytes) {
        for (const std::uint8_t byte : *bytes) {
            scalar = scalar << 8U | byte;
        }
    }
    const bool isSurrogate = scalar >= 0xD800 && scalar <= 0xDFFF;
    const bool isText = scalar != 0 && scalar <= 0x10FFFF && !isSurrogate;
    utf8::append(text, isText ? scalar : U'\uFFFD');
}

std::string doubleQuoted(std::string_view inner) {
    std::string result;
    for (std::size_t i = 0; i < inner.size(); ++i) {
        if (inner[i] != '\\' || i + 1 == inner.size()) {
            result += inner[i];
            continue;
        }
        const char letter = inner[++i];
        const std::size_t digits = letter == 'x' ? 2 : letter == 'u' ? 4 : letter == 'U' ? 8 : 0;
        if (digits > 0) {
            appendCharacter(result, inner.substr(i + 1, digits));
            i = std::min(i + digits, inner.size() - 1);
            continue;
        }
        for (const auto& [known, meaning] : escapes) {
            if (known == letter) result += meaning;
        }
    }
    return result;
}

/// The text between the quotation mark that `text` begins with and its match.
std::optional<std::string_view> insideQuotes(std::string_view text, char quote) {
    if (!text.starts_with(quote)) return std::nullopt;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const bool isEscape = quote == '"' && text[i] == '\\';
        const bool isDoubled = quote == '\'' && text.substr(i).starts_with("''");
        if (isEscape || isDoubled) {
            ++i;
        } else if (text[i] == quote) {
            return text.substr(1, i - 1);
        }
    }
    return std::nullopt;
}

/// The same, when nothing follows the match.
std::optional<std::string_view> whollyInsideQuotes(std::string_view text, char quote) {
    const auto inside = insideQuotes(text, quote);
    return inside && inside->size() + 2 == text.size() ? inside : std::nullopt;
}

}  // namespace

bool QuoteWalk::isOutside(char c) {
    if (isEscaped_) {
        isEscaped_ = false;
        return false;
    }
    if (quote_ != 0) {
        if (quote_ == '"' && c == '\\') isEscaped_ = true;
        if (c == quote_) quote_ = 0;
        previous_ = c;
        return false;
    }
    // A mark inside a word, as in "Anna's", opens nothing.
    const bool mayOpen = std::string_view(" \t,[{:").find(previous_) != std::string_view::npos;
    previous_ = c;
    if ((c != '"' && c != '\'') || !mayOpen) return true;
    quote_ = c;
    return false;
}

void BracketCount::add(std::string_view line) {
    for (const char c : line) {
        if (!walk_.isOutside(c)) continue;
        if (c == '[' || c == '{') ++depth_;
        if (c == ']' || c == '}') --depth_;
    }
}

std::optional<LeadingKey> leadingKey(std::string_view line) {
    if (line.empty()
        || std::string_view(" \t-#[]{}").find(line.front()) != std::string_view::npos) {
        return std::nullopt;
    }
    for (const char quote : {'"', '\''}) {
        const auto inside = insideQuotes(line, quote);
        if (!inside) continue;
        std::string_view rest = line.substr(inside->size() + 2);
        if (!rest.starts_with(':')) return std::nullopt;
        return LeadingKey{scalar(line.substr(0, inside->size() + 2)), rest.substr(1)};
    }
    for (std::size_t colon = line.find(':'); colon != std::string_view::npos;
         colon = line.find(':', colon + 1)) {
        const bool isEnd = colon + 1 == line.size();
        if (!isEnd && line[colon + 1] != ' ' && line[colon + 1] != '\t') continue;
        const std::string_view key = text::trimmed(line.substr(0, colon));
        if (key.empty()) return std::nullopt;
        return LeadingKey{std::string(key), line.substr(colon + 1)};
    }
    return std::nullopt;
}

std::string_view withoutComment(std::string_view text) {
    QuoteWalk walk;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isBegin = i == 0 || text[i - 1] == ' ' || text[i - 1] == '\t';
        if (walk.isOutside(text[i]) && text[i] == '#' && isBegin) {
            return text::trimmed(text.substr(0, i));
        }
    }
    return text::trimmed(text);
}

std::string scalar(std::string_view text) {
    text = text::trimmed(text);
    if (const auto inside = whollyInsideQuotes(text, '\'')) return singleQuoted(*inside);
    if (const auto inside = whollyInsideQuotes(text, '"')) return doubleQuoted(*inside);
    if (text == "~" || text == "null") return {};
    return std::string(text);
}

std::optional<std::vector<std::string>> flowList(std::string_view text) {
    text = withoutComment(text);
    if (text.size() < 2 || text.front() != '[' || text.back() != ']') return std::nullopt;
    text = text.substr(1, text.size() - 2);
    std::vector<std::string> items;
    QuoteWalk walk;
    std::ptrdiff_t depth = 0;
    std::size_t begin = 0;
    const auto finish = [&](std::size_t end) {
        if (std::string item = scalar(text.substr(begin, end - begin)); !item.empty()) {
            items.push_back(std::move(item));
        }
        begin = end + 1;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!walk.isOutside(text[i])) continue;
        if (text[i] == '[' || text[i] == '{') ++depth;
        if (text[i] == ']' || text[i] == '}') --depth;
        if (text[i] == ',' && depth == 0) finish(i);
    }
    finish(text.size());
    return items;
}

}  // namespace tesserine::yaml
