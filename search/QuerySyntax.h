#pragma once

#include "search/QueryFields.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a query says, as values: the tree that `QueryParser.h` reads and `QueryCompiler.h` turns
/// into a search.
namespace tesserine {

/// A word or a phrase, as it was typed.
struct QueryText {
    enum class Form {
        word,
        prefix,  ///< begins a word: `inv*`, or the last word while someone types
        part,    ///< stands somewhere in a word: `*voic*`
        phrase,  ///< words that follow each other
    };
    std::string text;  ///< without quotes and asterisks; holds a letter or a digit
    Form form = Form::word;
};

/// What stands after a field's colon.
struct QueryValue {
    std::string text;
    std::optional<std::string> upTo;  ///< of `a..b`; empty: without end
    bool isQuoted = false;

    /// Whether an asterisk stands for the rest of it.
    bool isBeginning() const { return !isQuoted && text.ends_with('*'); }
    /// Without that asterisk.
    std::string_view stem() const {
        return std::string_view(text).substr(0, text.size() - (isBeginning() ? 1 : 0));
    }
};

/// A field with its values, any of which will do.
struct QueryFilter {
    enum class Comparison { none, equal, atLeast, atMost, above, below };
    QueryField field = QueryField::tag;
    Comparison comparison = Comparison::none;
    std::vector<QueryValue> values;  ///< at least one

    /// Whether one of the values is `value`, which is in lower case, ignoring case.
    bool says(std::string_view value) const;
};

/// A part of a query.
struct QueryNode {
    enum class Kind { all, any, negation, text, filter };
    Kind kind = Kind::all;
    std::vector<QueryNode> children{};  ///< of `all` and `any`; the one of `negation`
    QueryText text{};
    QueryFilter filter{};
    std::string typed{};  ///< of `text` and `filter`: as they stand in the query

    /// Whether it is a word on its own, neither in quotes nor behind a field.
    bool isWord() const { return kind == Kind::text && text.form != QueryText::Form::phrase; }
};

/// Calls `visit` with `node` and everything below it, each before what it holds.
template <class Node, class Visit>
void forEachNode(Node& node, const Visit& visit) {
    visit(node);
    for (auto& child : node.children) {
        forEachNode(child, visit);
    }
}

/// Words, phrases and filters of a query; what follows them is ignored.
inline constexpr std::size_t maximumQueryTerms = 32;

/// A whole query.
struct Query {
    /// Always of kind `all`; no children when nothing restricts the search. A child of `all` is not
    /// `all` itself, nor of `any` `any`, nor of `negation` `negation`, so that the tree is not
    /// deeper than a few times its terms.
    QueryNode root{};
    /// Sentences that tell what was not understood, or left out.
    std::vector<std::string> hints{};

    /// Whether a filter that only tasks can pass is in it.
    bool asksForTasks() const;
};

}  // namespace tesserine
