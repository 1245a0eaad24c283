#include "core/import/InlineText.h"

#include "core/import/MarkdownHTML.h"
#include "core/import/RawHTML.h"

#include <algorithm>

namespace tesserine {
namespace {

constexpr std::string_view mark = "==";
constexpr std::string_view embedBegin = "![[";
constexpr std::string_view embedEnd = "]]";
constexpr std::size_t mostEmbedBytes = 1'000;

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\0'; }

bool isWord(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// A word after "#" that holds a letter; "/" makes levels.
const Regex& tagPattern() {
    static const Regex pattern(
        R"((?<![^\s(\[{"'“«,;])#((?=[\p{N}_/-]*\p{L})[\p{L}\p{M}\p{N}_/-]*[\p{L}\p{M}\p{N}]))");
    return pattern;
}

}  // namespace

char InlineText::before(std::string_view text, std::size_t index) const {
    if (index > 0) return text[index - 1];
    const bool isInside =
        text.data() > source_.data() && text.data() < source_.data() + source_.size();
    return isInside ? *(text.data() - 1) : '\0';
}

char InlineText::after(std::string_view text, std::size_t index) const {
    if (index < text.size()) return text[index];
    const char* next = text.data() + text.size();
    const bool isInside = next > source_.data() && next < source_.data() + source_.size();
    return isInside ? *next : '\0';
}

bool InlineText::isMark(std::string_view text, std::size_t index) const {
    return text.substr(index).starts_with(mark) && before(text, index) != '='
           && after(text, index + mark.size()) != '=';
}

void InlineText::writeMark(std::string& html, std::string_view text, std::size_t index) {
    const char previous = before(text, index);
    const char next = after(text, index + mark.size());
    const bool isInWord = isWord(previous) && isWord(next);  // as in "a==b"
    const bool isOpen = !marks_.empty() && marks_.back().spanDepth == spanDepth_;
    if (isOpen && !isSpace(previous) && !isInWord) {
        mendings_.push_back({marks_.back().position, mark.size(), "<mark>"});
        mendings_.push_back({html.size(), mark.size(), "</mark>"});
        marks_.pop_back();
    } else if (!isOpen && !isSpace(next) && !isInWord) {
        marks_.push_back({html.size(), spanDepth_});
    }
    html += mark;
}

std::size_t InlineText::writeEmbed(
    std::string& html, std::string_view text, std::size_t index) const {
    const std::size_t begin = index + embedBegin.size();
    const std::size_t end = text.substr(0, begin + mostEmbedBytes).find(embedEnd, begin);
    if (end == std::string_view::npos || end == begin) return 0;
    const std::string_view inside = text.substr(begin, end - begin);
    if (inside.find('[') != std::string_view::npos) return 0;
    const std::string_view target = inside.substr(0, inside.find('|'));
    html += "<a href=\"";
    html += wikiEmbedScheme;
    rawhtml::appendAttributeEscaped(html, target);
    html += "\">";
    rawhtml::appendEscaped(html, target);
    html += "</a>";
    return end + embedEnd.size() - index;
}

bool InlineText::write(std::string& html, std::string_view text, bool isInLink) {
    if (recognisesTags_ && !isInLink) collectTags(text);
    bool hasEmbed = false;
    std::size_t written = 0;
    for (std::size_t i = text.find_first_of("=!"); i != std::string_view::npos;
         i = text.find_first_of("=!", std::max(written, i + 1))) {
        const bool isEmbed = !isInLink && text.substr(i).starts_with(embedBegin);
        if (!isEmbed && !isMark(text, i)) continue;
        rawhtml::appendEscaped(html, text.substr(written, i - written));
        written = i;
        if (isEmbed) {
            const std::size_t length = writeEmbed(html, text, i);
            written += length;
            hasEmbed = hasEmbed || length > 0;
        } else {
            writeMark(html, text, i);
            written += mark.size();
        }
    }
    rawhtml::appendEscaped(html, text.substr(written));
    return hasEmbed;
}

void InlineText::writeTag(std::string& html, std::string_view tag) {
    if (rawText_) {
        if (rawhtml::isEndTag(tag, rawText_->name)) rawText_.reset();
    } else if (std::string name = rawhtml::rawTextElement(tag); !name.empty()) {
        rawText_ = OpenElement{html.size(), std::move(name)};
    }
    html += tag;
}

void InlineText::leaveSpan() {
    --spanDepth_;
    while (!marks_.empty() && marks_.back().spanDepth > spanDepth_) {
        marks_.pop_back();
    }
}

void InlineText::finish(std::string& html) {
    if (rawText_) mendings_.push_back({rawText_->position, 1, "&lt;"});
    rawText_.reset();
    marks_.clear();
    if (mendings_.empty()) return;

    std::ranges::sort(mendings_, {}, &Mending::position);
    const std::size_t begin = mendings_.front().position;
    const std::string tail = html.substr(begin);
    html.resize(begin);
    std::size_t copied = begin;
    for (const auto& [position, length, replacement] : mendings_) {
        html += std::string_view(tail).substr(copied - begin, position - copied);
        html += replacement;
        copied = position + length;
    }
    html += std::string_view(tail).substr(copied - begin);
    mendings_.clear();
}

void InlineText::collectTags(std::string_view text) {
    if (text.find('#') == std::string_view::npos) return;
    tagPattern().forEach(text, [&](const Regex::Match& match) {
        const bool isEscaped = match.groups[0].begin == 0 && before(text, 0) == '\\';
        if (!isEscaped) tags_.emplace_back(match.group(text, 1));
        return true;
    });
}

}  // namespace tesserine
