#include "search/QueryScanner.h"

#include "base/Text.h"
#include "base/UTF8.h"
#include "search/QueryCharacters.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {

namespace {

using TokenKind = QueryScanner::Token::Kind;

constexpr std::string_view wordEndings = "\"()|";
constexpr std::string_view cutHint = "A very long text was cut short.";

bool isASCIILetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

QueryScanner::Token symbol(TokenKind kind) { return {.kind = kind}; }

/// Words that are operators, in capitals only: “salt or pepper” is text.
constexpr std::array<std::pair<std::string_view, TokenKind>, 4> operators{{
    {"OR", TokenKind::either},
    {"AND", TokenKind::both},
    {"&", TokenKind::both},
    {"NOT", TokenKind::negation},
}};

std::optional<TokenKind> operatorOf(std::string_view word) {
    for (const auto& [name, kind] : operators) {
        if (word == name) return kind;
    }
    return std::nullopt;
}

/// Fields whose values hold commas themselves.
bool hasCommas(QueryField field) {
    return field == QueryField::amount || field == QueryField::account;
}

/// Fields whose values are looked for as words are.
bool isLookedFor(QueryField field) {
    return field == QueryField::title || field == QueryField::body || field == QueryField::file;
}

QueryText wordOf(std::string_view typed) {
    QueryText word;
    while (typed.starts_with('*')) {
        word.form = QueryText::Form::part;
        typed.remove_prefix(1);
    }
    while (typed.ends_with('*')) {
        if (word.form == QueryText::Form::word) word.form = QueryText::Form::prefix;
        typed.remove_suffix(1);
    }
    word.text = typed;
    return word;
}

}  // namespace

bool QueryScanner::isAtWhiteSpace() const {
    return !isAtEnd() && isWhiteSpace(utf8::first(text_.substr(position_)).value);
}

void QueryScanner::skipWhiteSpace() {
    while (isAtWhiteSpace()) {
        position_ += utf8::first(text_.substr(position_)).length;
    }
}

/// Up to white space or one of `endings`.
std::string_view QueryScanner::bare(std::string_view endings) {
    const std::size_t begin = position_;
    while (!isAtEnd() && endings.find(peek()) == std::string_view::npos && !isAtWhiteSpace()) {
        position_ += utf8::first(text_.substr(position_)).length;
    }
    return text_.substr(begin, position_ - begin);
}

/// A text in quotes; the quote at the end may be missing.
std::string QueryScanner::phrase() {
    std::string phrase;
    for (++position_; !isAtEnd() && peek() != '"'; ++position_) {
        if (text_.substr(position_).starts_with("\\\"")) ++position_;
        phrase += peek();
    }
    if (!isAtEnd()) ++position_;
    return phrase;
}

std::string QueryScanner::kept(std::string_view text) {
    const std::string_view cut = cutAtWord(text, maximumTermBytes);
    const bool isNews =
        cut.size() < text.size() && std::ranges::find(hints_, cutHint) == hints_.end();
    if (isNews) hints_.emplace_back(cutHint);
    return std::string(cut);
}

QueryScanner::Token QueryScanner::next() {
    skipWhiteSpace();
    if (isAtEnd()) return symbol(TokenKind::end);
    const char c = peek();
    if (c == '"') return phraseToken();
    if (c == '#') return tagToken();
    if (c == '(' || c == ')' || c == '|') {
        ++position_;
        return symbol(c == '(' ? TokenKind::open : c == ')' ? TokenKind::close : TokenKind::either);
    }
    if (c == '-' || c == '!') {
        ++position_;
        return symbol(isAtEnd() || isAtWhiteSpace() ? TokenKind::nothing : TokenKind::negation);
    }
    std::string_view name;
    if (const auto field = fieldHere(name)) return filterToken(*field, name);
    return wordToken();
}

QueryScanner::Token QueryScanner::phraseToken() {
    const std::size_t begin = position_;
    const std::string text = kept(phrase());
    if (!hasWordCharacter(text)) return symbol(TokenKind::nothing);
    QueryNode node{.kind = QueryNode::Kind::text, .text = {text, QueryText::Form::phrase}};
    node.typed = text_.substr(begin, position_ - begin);
    return {TokenKind::term, std::move(node)};
}

QueryScanner::Token QueryScanner::tagToken() {
    const std::size_t begin = position_++;
    // A tag after “#” means what it says, even “none”.
    QueryValue tag{.isQuoted = true};
    if (peek() == '"') {
        tag.text = kept(phrase());
    } else {
        tag.text = kept(bare(wordEndings));
        while (tag.text.ends_with(',') || tag.text.ends_with(';')) {
            tag.text.pop_back();
        }
    }
    if (text::isBlank(tag.text)) return symbol(TokenKind::nothing);
    QueryNode node{
        .kind = QueryNode::Kind::filter,
        .filter = {.field = QueryField::tag, .values = {std::move(tag)}}};
    node.typed = text_.substr(begin, position_ - begin);
    return {TokenKind::term, std::move(node)};
}

QueryScanner::Token QueryScanner::wordToken() {
    const std::string_view typed = bare(wordEndings);
    if (const auto found = operatorOf(typed)) return symbol(*found);
    QueryText word = wordOf(typed);
    if (!hasWordCharacter(word.text)) return symbol(TokenKind::nothing);
    hintAtUnknownField(typed);
    word.text = kept(word.text);
    const bool goesOn = lastWord_ == LastWord::mayGoOn && isAtEnd();
    if (goesOn && word.form == QueryText::Form::word) word.form = QueryText::Form::prefix;
    return {
        TokenKind::term,
        {.kind = QueryNode::Kind::text, .text = std::move(word), .typed = std::string(typed)}};
}

/// The field whose name and colon stand here; `name` is then its name. What begins like an address
/// is none.
std::optional<QueryField> QueryScanner::fieldHere(std::string_view& name) const {
    const std::string_view rest = text_.substr(position_);
    const auto end =
        static_cast<std::size_t>(std::ranges::find_if_not(rest, isASCIILetter) - rest.begin());
    if (end == 0 || end >= rest.size() || rest[end] != ':') return std::nullopt;
    if (rest.substr(end + 1).starts_with("//")) return std::nullopt;
    name = rest.substr(0, end);
    return findQueryField(name);
}

QueryScanner::Token QueryScanner::filterToken(QueryField field, std::string_view name) {
    const std::size_t begin = position_;
    position_ += name.size() + 1;
    const std::size_t colonEnd = position_;
    skipWhiteSpace();
    if (!isValueNext()) {
        position_ = colonEnd;
        return symbol(TokenKind::nothing);
    }
    QueryFilter filter{.field = field, .comparison = comparison()};
    filter.values = values(field);
    if (filter.values.empty()) return symbol(TokenKind::nothing);

    const QueryValue& first = filter.values.front();
    const bool isScope = text::asciiLowercased(name) == "in" && !first.isQuoted
                         && (first.text == "trash" || first.text == "anywhere");
    if (isScope) filter.field = QueryField::scope;
    QueryNode node{.kind = QueryNode::Kind::filter, .filter = std::move(filter)};
    node.typed = text_.substr(begin, position_ - begin);
    return {TokenKind::term, std::move(node)};
}

/// Whether what follows a field's colon can be its value, and is not the next part of the query.
bool QueryScanner::isValueNext() const {
    if (isAtEnd() || std::string_view("()|#!").find(peek()) != std::string_view::npos) return false;
    std::string_view name;
    if (fieldHere(name)) return false;
    const std::string_view rest = text_.substr(position_);
    return std::ranges::none_of(operators, [&](const auto& entry) {
        if (!rest.starts_with(entry.first)) return false;
        const std::string_view after = rest.substr(entry.first.size());
        return after.empty() || isWhiteSpace(utf8::first(after).value);
    });
}

QueryFilter::Comparison QueryScanner::comparison() {
    using Comparison = QueryFilter::Comparison;
    static constexpr std::array<std::pair<std::string_view, Comparison>, 5> signs{{
        {">=", Comparison::atLeast},
        {"<=", Comparison::atMost},
        {">", Comparison::above},
        {"<", Comparison::below},
        {"=", Comparison::equal},
    }};
    for (const auto& [sign, comparison] : signs) {
        if (!text_.substr(position_).starts_with(sign)) continue;
        position_ += sign.size();
        return comparison;
    }
    return Comparison::none;
}

std::vector<QueryValue> QueryScanner::values(QueryField field) {
    std::vector<QueryValue> values;
    while (true) {
        QueryValue next = value(field);
        const bool isEmpty = next.text.empty() && !next.upTo;
        if (!isEmpty && values.size() < maximumQueryTerms) values.push_back(std::move(next));
        if (peek() != ',') return values;
        ++position_;
    }
}

QueryValue QueryScanner::value(QueryField field) {
    if (peek() == '"') {
        return {.text = std::string(text::trimmed(kept(phrase()))), .isQuoted = true};
    }
    const std::string_view typed = bare(hasCommas(field) ? wordEndings : "\"()|,");
    const std::size_t dots = typed.find("..");
    if (dots != std::string_view::npos && typed.size() > 2) {
        return {.text = kept(typed.substr(0, dots)), .upTo = kept(typed.substr(dots + 2))};
    }
    QueryValue value{.text = kept(typed)};
    const bool goesOn = lastWord_ == LastWord::mayGoOn && isAtEnd() && isLookedFor(field);
    if (goesOn && !value.text.empty() && !value.text.ends_with('*')) value.text += '*';
    return value;
}

/// `author:smith` is text, and so is 10:30 or an address; only the first looks like a mistake.
void QueryScanner::hintAtUnknownField(std::string_view word) {
    const std::size_t colon = word.find(':');
    if (colon == std::string_view::npos || colon < 2 || colon + 1 == word.size()) return;
    const std::string_view name = word.substr(0, colon);
    const bool looksLikeField =
        std::ranges::all_of(name, isASCIILetter) && !word.substr(colon + 1).starts_with("/");
    if (!looksLikeField) return;
    hints_.push_back(
        "“" + std::string(kept(name)) + ":” is no field, so it was looked for as text.");
}

}  // namespace tesserine
