#include "search/QueryCompiler.h"

#include "search/MatchExpression.h"
#include "search/QueryCharacters.h"
#include "search/QueryKeys.h"
#include "search/SearchIndex.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tesserine {

namespace {

using Kind = QueryNode::Kind;
using Form = QueryText::Form;

/// Whether full-text expressions alone can say it.
bool isTextual(const QueryNode& node) {
    switch (node.kind) {
    case Kind::text: return true;
    case Kind::negation: return false;
    case Kind::all:
    case Kind::any: return std::ranges::all_of(node.children, isTextual);
    case Kind::filter: break;
    }
    static constexpr std::array fields{
        QueryField::title, QueryField::body, QueryField::amount, QueryField::account};
    return std::ranges::find(fields, node.filter.field) != fields.end();
}

/// Whether the query says itself where it looks for what is in the trash.
bool looksIntoTrash(const QueryNode& root) {
    bool looks = false;
    forEachNode(root, [&](const QueryNode& node) {
        const QueryFilter& filter = node.filter;
        const bool isTrashed = filter.field == QueryField::is && filter.says("trashed");
        const bool isScope = filter.field == QueryField::scope || isTrashed;
        looks = looks || (node.kind == Kind::filter && isScope);
    });
    return looks;
}

/// The last order asked for.
SearchSort sortOf(const QueryNode& root) {
    SearchSort sort = SearchSort::relevance;
    forEachNode(root, [&](const QueryNode& node) {
        if (node.kind != Kind::filter || node.filter.field != QueryField::sort) return;
        sort = node.filter.says("newest")   ? SearchSort::newest
               : node.filter.says("oldest") ? SearchSort::oldest
                                            : SearchSort::relevance;
    });
    return sort;
}

/// The words in their order as one phrase; a single word as it stands. None without words.
std::optional<std::string> strictExpression(const std::vector<const QueryNode*>& required) {
    std::string words;
    for (const QueryNode* node : required) {
        if (node->isWord()) words += (words.empty() ? "" : " ") + node->text.text;
    }
    if (words.empty()) return std::nullopt;
    return match::in(match::writtenColumns, match::phrase(words));
}

}  // namespace

CompiledQuery QueryCompiler::compile(const Query& query, std::int64_t limit) {
    CompiledQuery compiled{
        .search = {.sort = sortOf(query.root), .limit = limit}, .hints = query.hints};
    Search& search = compiled.search;
    if (!looksIntoTrash(query.root)) search.filters.push_back(filter::isTrashed(false));

    std::vector<const QueryNode*> required;
    for (const QueryNode& child : query.root.children) {
        const bool isLeftOut = child.kind == Kind::negation && isTextual(child.children.front());
        if (isTextual(child)) {
            required.push_back(&child);
        } else if (isLeftOut) {
            auto negated = expression(child.children.front(), documentColumns);
            if (negated) search.negated.push_back(std::move(*negated));
        } else if (auto filter = condition(child)) {
            search.filters.push_back(std::move(*filter));
        }
    }
    addRequired(compiled, required);
    for (const std::vector<std::string>* hints : {&std::as_const(hints_), &conditions_.hints()}) {
        compiled.hints.insert(compiled.hints.end(), hints->begin(), hints->end());
    }
    return compiled;
}

void QueryCompiler::addRequired(
    CompiledQuery& compiled, const std::vector<const QueryNode*>& required) {
    const auto inDocuments = expressions(required, documentColumns);
    if (inDocuments.empty()) return;
    compiled.search.match = match::allOf(inDocuments);
    compiled.search.strict = strictExpression(required);
    const auto inAttachments = expressions(required, attachmentColumns);
    if (inAttachments.empty()) return;
    compiled.attachmentsWithAll = match::allOf(inAttachments);
    compiled.attachmentsWithAny = match::anyOf(inAttachments);
}

/// What a part of the query that holds more than words asks of a document.
std::optional<BoundSQL> QueryCompiler::condition(const QueryNode& node) {
    if (isTextual(node)) {
        const auto found = expression(node, documentColumns);
        return found ? std::optional(filter::matching(*found)) : std::nullopt;
    }
    if (node.kind == Kind::filter) return conditions_.condition(node);

    std::vector<BoundSQL> parts;
    for (const QueryNode& child : node.children) {
        if (auto part = condition(child)) parts.push_back(std::move(*part));
    }
    if (parts.empty()) return std::nullopt;
    if (node.kind == Kind::negation) return filter::negation(std::move(parts.front()));
    return node.kind == Kind::any ? filter::anyOf(parts) : filter::allOf(parts);
}

std::optional<std::string> QueryCompiler::expression(
    const QueryNode& node, const Columns& columns) {
    if (node.kind == Kind::text) return word(node.text, columns);
    if (node.kind == Kind::filter) {
        const bool isKeyed =
            node.filter.field == QueryField::amount || node.filter.field == QueryField::account;
        return isKeyed ? keyed(node, columns) : looked(node.filter, columns);
    }
    std::vector<const QueryNode*> children;
    for (const QueryNode& child : node.children) {
        children.push_back(&child);
    }
    std::vector<std::string> parts;
    if (node.kind == Kind::all) {
        parts = expressions(children, columns);
    } else {
        for (const QueryNode* child : children) {
            if (auto part = expression(*child, columns)) parts.push_back(std::move(*part));
        }
    }
    if (parts.empty()) return std::nullopt;
    return node.kind == Kind::all ? match::allOf(parts) : match::anyOf(parts);
}

/// One expression for each of several nodes that all must match, or for several words that are one
/// date or number together.
std::vector<std::string> QueryCompiler::expressions(
    std::span<const QueryNode* const> nodes, const Columns& columns) {
    std::vector<std::string> all;
    while (!nodes.empty()) {
        const auto run = static_cast<std::size_t>(
            std::ranges::find_if_not(nodes, [](const QueryNode* node) { return node->isWord(); })
            - nodes.begin());
        for (std::string& part : neighbours(nodes.first(run), columns)) {
            all.push_back(std::move(part));
        }
        nodes = nodes.subspan(run);
        if (nodes.empty()) break;
        if (auto part = expression(*nodes.front(), columns)) all.push_back(std::move(*part));
        nodes = nodes.subspan(1);
    }
    return all;
}

std::vector<std::string> QueryCompiler::neighbours(
    std::span<const QueryNode* const> words, const Columns& columns) {
    std::vector<std::string> texts;
    for (const QueryNode* node : words) {
        texts.push_back(node->text.text);
    }
    const auto together = keysOfNeighbours(texts);
    auto next = together.begin();
    std::vector<std::string> all;
    for (std::size_t i = 0; i < words.size();) {
        const bool isTogether = next != together.end() && next->first == i;
        const std::size_t count = isTogether ? next->count : 1;
        std::vector<std::string> written;
        for (std::size_t end = i + count; i < end; ++i) {
            written.push_back(word(words[i]->text, columns));
        }
        std::vector<std::string> any;
        if (isTogether) {
            for (const std::string& key : next->keys) {
                any.push_back(match::in(columns.keys, match::phrase(key)));
            }
            ++next;
        }
        any.push_back(match::allOf(written));
        all.push_back(match::anyOf(any));
    }
    return all;
}

/// A word or phrase as it may have been written, or one of its keys.
std::string QueryCompiler::word(const QueryText& word, const Columns& columns) {
    if (word.form == Form::phrase) return match::in(columns.written, match::phrase(word.text));
    std::vector<std::string> any;
    for (const std::string& key : keysOfWord(word.text)) {
        any.push_back(match::in(columns.keys, match::phrase(key)));
    }
    any.push_back(match::in(columns.written, match::anyOf(variants(word))));
    return match::anyOf(any);
}

/// The word itself, what the user calls it too, and the terms that hold it.
std::vector<std::string> QueryCompiler::variants(const QueryText& word) {
    std::vector<std::string> any;
    if (word.form == Form::part || hasUnspacedScript(word.text)) {
        for (const std::string& term : setting_.vocabulary.termsContaining(indexFold(word.text))) {
            any.push_back(match::phrase(term));
        }
    }
    const bool isBeginning = word.form == Form::prefix;
    if (any.empty() || isBeginning) {
        any.push_back(isBeginning ? match::beginning(word.text) : match::phrase(word.text));
    }
    for (const std::string& synonym : synonyms_.of(withoutPunctuation(word.text))) {
        if (hasWordCharacter(synonym)) any.push_back(match::phrase(synonym));
    }
    return any;
}

/// `title:` and `body:`.
std::optional<std::string> QueryCompiler::looked(
    const QueryFilter& filter, const Columns& columns) {
    const bool isTitle = filter.field == QueryField::title;
    const std::string_view column = isTitle ? columns.title : columns.body;
    std::vector<std::string> any;
    for (const QueryValue& value : filter.values) {
        if (column.empty() || !hasWordCharacter(value.text)) continue;
        any.push_back(match::value(value));
    }
    if (any.empty()) return std::nullopt;
    return match::in(column, match::anyOf(any));
}

/// `amount:` and `account:`, which only look at keys.
std::optional<std::string> QueryCompiler::keyed(const QueryNode& node, const Columns& columns) {
    const bool isAmount = node.filter.field == QueryField::amount;
    std::vector<std::string> any;
    for (const QueryValue& value : node.filter.values) {
        for (const std::string& key :
             isAmount ? keysOfAmount(value.text) : keysOfAccount(value.text)) {
            any.push_back(match::phrase(key));
        }
    }
    using Comparison = QueryFilter::Comparison;
    const Comparison comparison = node.filter.comparison;
    const bool isCompared = comparison != Comparison::none && comparison != Comparison::equal;
    if (isCompared) hint("Amounts and account numbers can only be looked for exactly.");
    if (any.empty()) hint("“" + node.typed + "” holds no number, so it was left out.");
    if (any.empty()) return std::nullopt;
    return match::in(columns.keys, match::anyOf(any));
}

/// A query is compiled for documents and for attachments: each sentence is said once.
void QueryCompiler::hint(const std::string& sentence) {
    if (std::ranges::find(hints_, sentence) == hints_.end()) hints_.push_back(sentence);
}

}  // namespace tesserine
