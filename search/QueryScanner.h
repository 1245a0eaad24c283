#pragma once

#include "search/QuerySyntax.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Cuts a query into its terms, brackets and operators, from the front. What is none of these, such
/// as a lone asterisk, comes out as `nothing`: there is no wrong text.
class QueryScanner {
public:
    /// Longest text of one term; the rest of it is left out.
    static constexpr std::size_t maximumTermBytes = 1'000;

    struct Token {
        enum class Kind { term, nothing, open, close, either, both, negation, end };
        Kind kind = Kind::end;
        QueryNode term{};  ///< of kind `text` or `filter`
    };

    enum class LastWord { asTyped, mayGoOn };
    /// `text` is clean UTF-8 and stays where it is. With `mayGoOn` a word at its very end is the
    /// beginning of one.
    QueryScanner(std::string_view text, LastWord lastWord) : text_(text), lastWord_(lastWord) {}

    Token next();
    /// What had to be said about the tokens so far.
    const std::vector<std::string>& hints() const { return hints_; }

private:
    char peek() const { return position_ < text_.size() ? text_[position_] : '\0'; }
    bool isAtWhiteSpace() const;
    bool isAtEnd() const { return position_ >= text_.size(); }
    void skipWhiteSpace();
    std::string_view bare(std::string_view endings);
    std::string phrase();
    std::string kept(std::string_view text);

    Token phraseToken();
    Token tagToken();
    Token wordToken();
    Token filterToken(QueryField field, std::string_view name);
    std::optional<QueryField> fieldHere(std::string_view& name) const;
    bool isValueNext() const;
    QueryFilter::Comparison comparison();
    std::vector<QueryValue> values(QueryField field);
    QueryValue value(QueryField field);
    void hintAtUnknownField(std::string_view word);

    std::string_view text_;
    LastWord lastWord_;
    std::size_t position_ = 0;
    std::vector<std::string> hints_;
};

}  // namespace tesserine
