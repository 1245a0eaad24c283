#include "search/QueryParser.h"

#include <optional>
#include <string>
#include <utility>

namespace tesserine {

namespace {

using Kind = QueryNode::Kind;

/// Brackets inside each other; deeper ones group nothing. SQLite's parsers take no deeper nesting
/// than this may grow into.
constexpr std::size_t maximumBrackets = 8;

/// Adds `node` to the children of an `all` or `any`; one of the same kind gives its own.
void adopt(std::vector<QueryNode>& children, QueryNode node, Kind parent) {
    if (node.kind != parent) {
        children.push_back(std::move(node));
        return;
    }
    for (QueryNode& child : node.children) {
        children.push_back(std::move(child));
    }
}

/// The children as one node; none when there are none.
std::optional<QueryNode> joined(Kind kind, std::vector<QueryNode> children) {
    if (children.empty()) return std::nullopt;
    if (children.size() == 1) return std::move(children.front());
    return QueryNode{.kind = kind, .children = std::move(children)};
}

QueryNode negated(QueryNode node) {
    if (node.kind == Kind::negation) return std::move(node.children.front());
    QueryNode negation{.kind = Kind::negation};
    negation.children.push_back(std::move(node));
    return negation;
}

/// What stands between two brackets, as far as it was read.
class Group {
public:
    void negateNext() { isNextNegated_ = !isNextNegated_; }
    void skipNext() { isNextNegated_ = false; }
    void add(QueryNode node) {
        if (std::exchange(isNextNegated_, false)) node = negated(std::move(node));
        adopt(required_, std::move(node), Kind::all);
    }
    void endAlternative() {
        isNextNegated_ = false;
        auto alternative = joined(Kind::all, std::exchange(required_, {}));
        if (alternative) adopt(alternatives_, std::move(*alternative), Kind::any);
    }
    std::optional<QueryNode> finish() {
        endAlternative();
        return joined(Kind::any, std::move(alternatives_));
    }

private:
    std::vector<QueryNode> alternatives_;
    std::vector<QueryNode> required_;  // of the alternative that is being read
    bool isNextNegated_ = false;
};

/// Turns `p1` to `p4` into the filter they stand for where tasks are asked for.
void readPriorities(Query& query) {
    if (!query.asksForTasks()) return;
    forEachNode(query.root, [](QueryNode& node) {
        const std::string& word = node.text.text;
        const bool isPriority = node.isWord() && word.size() == 2
                                && (word[0] == 'p' || word[0] == 'P') && word[1] >= '1'
                                && word[1] <= '4';
        if (!isPriority) return;
        node.kind = Kind::filter;
        node.filter = {.field = QueryField::priority, .values = {{.text = word}}};
    });
}

class Parser {
public:
    Parser(std::string_view text, QueryScanner::LastWord lastWord) : scanner_(text, lastWord) {}

    Query parse() {
        while (take(scanner_.next())) {}
        while (groups_.size() > 1) {
            close();
        }
        Query query{.hints = scanner_.hints()};
        if (isCut_) {
            query.hints.push_back(
                "Only the first " + std::to_string(maximumQueryTerms) + " terms were used.");
        }
        if (auto root = groups_.back().finish()) {
            adopt(query.root.children, std::move(*root), Kind::all);
        }
        readPriorities(query);
        return query;
    }

private:
    using Token = QueryScanner::Token;

    /// Whether there is more to read.
    bool take(Token token) {
        switch (token.kind) {
        case Token::Kind::term: return takeTerm(std::move(token.term));
        case Token::Kind::nothing: groups_.back().skipNext(); break;
        case Token::Kind::open: open(); break;
        case Token::Kind::close: close(); break;
        case Token::Kind::either: groups_.back().endAlternative(); break;
        case Token::Kind::both: break;
        case Token::Kind::negation: groups_.back().negateNext(); break;
        case Token::Kind::end: return false;
        }
        return true;
    }

    bool takeTerm(QueryNode term) {
        isCut_ = termCount_ == maximumQueryTerms;
        if (isCut_) return false;
        ++termCount_;
        groups_.back().add(std::move(term));
        return true;
    }

    void open() {
        if (groups_.size() > maximumBrackets) {
            ++ignoredBrackets_;
        } else {
            groups_.emplace_back();
        }
    }

    void close() {
        if (ignoredBrackets_ > 0) {
            --ignoredBrackets_;
            return;
        }
        if (groups_.size() == 1) return;
        auto group = groups_.back().finish();
        groups_.pop_back();
        if (group) {
            groups_.back().add(std::move(*group));
        } else {
            groups_.back().skipNext();
        }
    }

    QueryScanner scanner_;
    std::vector<Group> groups_{1};
    std::size_t ignoredBrackets_ = 0;
    std::size_t termCount_ = 0;
    bool isCut_ = false;
};

}  // namespace

Query parseQuery(std::string_view text, QueryScanner::LastWord lastWord) {
    return Parser(text, lastWord).parse();
}

}  // namespace tesserine
