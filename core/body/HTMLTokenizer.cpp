#include "core/body/HTMLTokenizer.h"

#include "core/body/CharacterReferences.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tesserine {

using html::isSpace;

namespace {

constexpr auto npos = std::string_view::npos;

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
char lower(char c) { return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; }

/// Bytes that end a tag name, an attribute name or an unquoted value.
enum Ends : std::uint8_t { endsTagName = 1, endsAttributeName = 2, endsValue = 4 };

constexpr auto ends = [] {
    std::array<std::uint8_t, 256> table{};
    for (const char c : {' ', '\n', '\t', '\f', '\r', '>'}) {
        table[static_cast<unsigned char>(c)] = endsTagName | endsAttributeName | endsValue;
    }
    table['/'] = endsTagName | endsAttributeName;
    table['='] = endsAttributeName;
    return table;
}();

/// Where the run of bytes that `kind` does not end stops, from `start` on.
std::size_t endOf(std::string_view html, std::size_t start, Ends kind) {
    while (start < html.size() && (ends[static_cast<unsigned char>(html[start])] & kind) == 0) {
        ++start;
    }
    return start;
}

/// Whether `html` says `word` (lower case) at `position`, in any case.
bool saysAt(std::string_view html, std::size_t position, std::string_view word) {
    if (html.size() - position < word.size()) return false;
    return std::ranges::equal(
        html.substr(position, word.size()), word, {}, [](char c) { return lower(c); });
}

/// Whether a "<" followed by `next` begins markup.
bool beginsMarkup(char next) { return isLetter(next) || next == '/' || next == '!' || next == '?'; }

std::size_t findMarkup(std::string_view html, std::size_t from) {
    for (;;) {
        const std::size_t found = html.find('<', from);
        if (found == npos || found + 1 == html.size()) return npos;
        if (beginsMarkup(html[found + 1])) return found;
        from = found + 1;
    }
}

}  // namespace

bool HTMLTokenizer::next(HTMLToken& token) {
    while (position_ < html_.size()) {
        const bool isRaw = rawText_ != HTMLElement::other;
        if (isRaw ? readRawTextInto(token) : readText(token)) return true;
        if (position_ < html_.size() && readMarkup(token)) return true;
    }
    return false;
}

/// Reads up to the next markup, if there is text before it.
bool HTMLTokenizer::readText(HTMLToken& token) {
    const std::size_t end = std::min(findMarkup(html_, position_), html_.size());
    if (end == position_) return false;
    token = {
        .kind = HTMLToken::Kind::text,
        .text = decoded(html_.substr(position_, end - position_), false)};
    position_ = end;
    return true;
}

/// Reads up to the end tag of the raw text element, if there is text before it.
bool HTMLTokenizer::readRawTextInto(HTMLToken& token) {
    const HTMLElement element = std::exchange(rawText_, HTMLElement::other);
    const std::string_view name = html::nameOf(element);
    std::size_t end = html_.size();
    if (element != HTMLElement::plaintext) {
        for (std::size_t i = html_.find("</", position_); i != npos; i = html_.find("</", i + 2)) {
            const std::size_t after = i + 2 + name.size();
            if (!saysAt(html_, i + 2, name) || after >= html_.size()) continue;
            if (!isSpace(html_[after]) && html_[after] != '/' && html_[after] != '>') continue;
            end = i;
            break;
        }
    }
    const std::string_view raw = html_.substr(position_, end - position_);
    position_ = end;
    if (raw.empty()) return false;
    const bool hasReferences = html::has(element, html::isReferenceText);
    token = {.kind = HTMLToken::Kind::text, .text = hasReferences ? decoded(raw, false) : raw};
    return true;
}

/// Reads the markup that begins here; false when it comes to nothing.
bool HTMLTokenizer::readMarkup(HTMLToken& token) {
    const char next = html_[position_ + 1];
    if (isLetter(next)) return readTag(token);
    if (next == '!') return readDeclaration(token);
    if (next == '?') {
        ++position_;
        readBogusComment(token);
        return true;
    }
    if (position_ + 2 == html_.size()) {  // "</" at the very end is text
        token = {.kind = HTMLToken::Kind::text, .text = html_.substr(position_)};
        position_ = html_.size();
        return true;
    }
    if (isLetter(html_[position_ + 2])) return readTag(token);
    position_ += 2;
    if (html_[position_] == '>') {
        ++position_;
        return false;
    }
    readBogusComment(token);
    return true;
}

/// Reads a start or end tag; one that the source breaks off is dropped.
bool HTMLTokenizer::readTag(HTMLToken& token) {
    const bool isEnd = html_[position_ + 1] == '/';
    const std::size_t start = position_ + (isEnd ? 2 : 1);
    position_ = endOf(html_, start, endsTagName);
    const std::string_view name = lowercased(html_.substr(start, position_ - start));
    token = {
        .kind = isEnd ? HTMLToken::Kind::endTag : HTMLToken::Kind::startTag,
        .text = name,
        .element = html::elementNamed(name)};
    if (position_ < html_.size() && html_[position_] == '>') {
        ++position_;
        return true;
    }
    if (!readAttributes(token)) return false;
    if (isEnd) token.isSelfClosing = false;
    return true;
}

bool HTMLTokenizer::readAttributes(HTMLToken& token) {
    attributes_.clear();
    for (;;) {
        skipSpaces();
        if (position_ == html_.size()) return false;
        const char c = html_[position_];
        if (c == '>') break;
        if (c == '/') {
            ++position_;
            token.isSelfClosing = position_ < html_.size() && html_[position_] == '>';
            continue;
        }
        if (!readAttribute(attributes_.size() < maximumAttributes)) return false;
    }
    ++position_;
    if (token.kind == HTMLToken::Kind::startTag) token.attributes = attributes_;
    return true;
}

/// Reads name and value; false when the source ends in it.
bool HTMLTokenizer::readAttribute(bool isKept) {
    const std::size_t start = position_;
    position_ = endOf(html_, start + 1, endsAttributeName);  // a "=" in front is part of the name
    const std::string_view rawName = html_.substr(start, position_ - start);
    std::string_view value;
    skipSpaces();
    if (position_ < html_.size() && html_[position_] == '=') {
        ++position_;
        skipSpaces();
        if (position_ == html_.size()) return false;
        const char quote = html_[position_];
        const bool isQuoted = quote == '"' || quote == '\'';
        const std::size_t from = isQuoted ? position_ + 1 : position_;
        const std::size_t end = isQuoted ? html_.find(quote, from) : endOf(html_, from, endsValue);
        if (end == npos) {
            position_ = html_.size();
            return false;
        }
        value = html_.substr(from, end - from);
        position_ = isQuoted ? end + 1 : end;
    }
    if (!isKept) return true;
    const std::string_view name = lowercased(rawName);
    if (attributeNamed(attributes_, name)) return true;
    attributes_.push_back({name, decoded(value, true)});
    return true;
}

bool HTMLTokenizer::readDeclaration(HTMLToken& token) {
    position_ += 2;
    if (saysAt(html_, position_, "--")) {
        position_ += 2;
        readComment(token);
        return true;
    }
    constexpr std::string_view doctype = "doctype";
    const bool isDoctype = saysAt(html_, position_, doctype);
    if (isDoctype) position_ += doctype.size();
    readBogusComment(token);
    if (isDoctype) token.kind = HTMLToken::Kind::doctype;
    return true;
}

/// Reads what follows "<!--", up to "-->" or "--!>"; "<!-->" and "<!--->" are whole comments.
void HTMLTokenizer::readComment(HTMLToken& token) {
    const std::size_t start = position_;
    std::size_t end = html_.size();
    position_ = html_.size();
    for (const std::string_view whole : {">", "->"}) {
        if (!html_.substr(start).starts_with(whole)) continue;
        token = {.kind = HTMLToken::Kind::comment};
        position_ = start + whole.size();
        return;
    }
    for (std::size_t i = html_.find("--", start); i != npos; i = html_.find("--", i + 1)) {
        const std::string_view rest = html_.substr(i + 2);
        if (!rest.starts_with(">") && !rest.starts_with("!>")) continue;
        end = i;
        position_ = i + (rest[0] == '>' ? 3 : 4);
        break;
    }
    token = {.kind = HTMLToken::Kind::comment, .text = html_.substr(start, end - start)};
}

/// Reads up to the next ">".
void HTMLTokenizer::readBogusComment(HTMLToken& token) {
    const std::size_t end = std::min(html_.find('>', position_), html_.size());
    token = {.kind = HTMLToken::Kind::comment, .text = html_.substr(position_, end - position_)};
    position_ = std::min(end + 1, html_.size());
}

void HTMLTokenizer::skipSpaces() {
    while (position_ < html_.size() && isSpace(html_[position_])) {
        ++position_;
    }
}

std::string_view HTMLTokenizer::decoded(std::string_view raw, bool isAttribute) {
    if (raw.find('&') == npos) return raw;
    scratch_.clear();
    html::appendDecoded(
        scratch_,
        raw,
        isAttribute ? html::ReferenceContext::attribute : html::ReferenceContext::text);
    return kept(scratch_);
}

std::string_view HTMLTokenizer::lowercased(std::string_view name) {
    if (std::ranges::none_of(name, isUpper)) return name;
    scratch_.assign(name);
    std::ranges::transform(scratch_, scratch_.begin(), lower);
    return kept(scratch_);
}

std::string_view HTMLTokenizer::kept(std::string_view text) {
    if (text.empty()) return {};
    auto* const copy = static_cast<char*>(memory_.allocate(text.size(), 1));
    std::memcpy(copy, text.data(), text.size());
    return {copy, text.size()};
}

void normalizeNewlines(std::string& html) {
    std::erase(html, '\0');
    std::size_t from = html.find('\r');
    if (from == std::string::npos) return;
    std::size_t to = from;
    for (; from < html.size(); ++from) {
        const bool isReturn = html[from] == '\r';
        if (isReturn && from + 1 < html.size() && html[from + 1] == '\n') continue;
        html[to++] = isReturn ? '\n' : html[from];
    }
    html.resize(to);
}

}  // namespace tesserine
