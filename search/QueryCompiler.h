#pragma once

#include "search/MatchExpression.h"
#include "search/QueryConditions.h"
#include "search/QuerySyntax.h"
#include "search/SearchStatement.h"
#include "search/SearchSynonyms.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// A query as the index can answer it.
struct CompiledQuery {
    Search search;
    /// Attachments that hold all of the words, and those that hold any; none without words.
    std::optional<std::string> attachmentsWithAll{};
    std::optional<std::string> attachmentsWithAny{};
    /// Sentences on what was left out.
    std::vector<std::string> hints{};
};

/// Turns the tree of a query into expressions and conditions.
///
/// What is required of the whole, words and phrases, becomes the expression that ranks; a negated
/// word leaves rows out; everything else becomes a condition. No text of the query reaches SQL but
/// as a binding, nor FTS5 but in double quotes.
class QueryCompiler {
public:
    QueryCompiler(const QueryConditions::Setting& setting, const SearchSynonyms& synonyms)
        : setting_(setting), synonyms_(synonyms), conditions_(setting) {}

    /// At most `limit` rows are wanted.
    CompiledQuery compile(const Query& query, std::int64_t limit);

private:
    using Expression = std::optional<std::string>;
    /// The columns of one full-text table by what they hold; an empty name: it has none such.
    struct Columns {
        std::string_view written;
        std::string_view title;
        std::string_view body;
        std::string_view keys;
    };
    static constexpr Columns documentColumns{match::writtenColumns, "title", "body", "keys"};
    static constexpr Columns attachmentColumns{"{filename body}", "", "", "keys"};

    void addRequired(CompiledQuery& compiled, const std::vector<const QueryNode*>& required);
    std::optional<BoundSQL> condition(const QueryNode& node);

    Expression expression(const QueryNode& node, const Columns& columns);
    std::vector<std::string> expressions(
        std::span<const QueryNode* const> nodes, const Columns& columns);
    std::vector<std::string> neighbours(
        std::span<const QueryNode* const> words, const Columns& columns);
    std::string word(const QueryText& word, const Columns& columns);
    std::vector<std::string> variants(const QueryText& word);
    Expression looked(const QueryFilter& filter, const Columns& columns);
    Expression keyed(const QueryNode& node, const Columns& columns);
    void hint(const std::string& sentence);

    QueryConditions::Setting setting_;
    const SearchSynonyms& synonyms_;
    QueryConditions conditions_;
    std::vector<std::string> hints_;
};

}  // namespace tesserine
