#include "search/QueryExplanation.h"

#include "search/FilterWording.h"
#include "search/QueryCharacters.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace tesserine {

namespace {

using Kind = QueryNode::Kind;
using Form = QueryText::Form;
using wording::listed;
using wording::strong;

/// The parts of one sentence, in the order in which they are said.
struct Clauses {
    std::string subject = "Notes and tasks";
    std::string trash{};                  ///< "in the trash"
    std::vector<std::string> attached{};  ///< follow the subject without a comma
    std::vector<std::string> further{};   ///< each after a comma
    std::vector<std::string> contained{};
    std::vector<std::string> excluded{};
    std::string order{};

    std::string sentence() const {
        std::string text = subject;
        if (!trash.empty()) text += " " + trash;
        for (const std::string& clause : attached) {
            text += " " + clause;
        }
        std::vector<std::string> rest = further;
        if (!contained.empty()) rest.push_back("containing " + listed(contained, "and"));
        if (!excluded.empty() && contained.empty()) {
            rest.push_back("not containing " + listed(excluded, "or"));
        } else if (!excluded.empty()) {
            rest.push_back("but not " + listed(excluded, "nor"));
        }
        for (const std::string& clause : rest) {
            // The first one needs no comma when nothing stands between it and the subject.
            const bool followsSubject = &clause == rest.data() && attached.empty();
            text += (followsSubject ? " " : ", ") + clause;
        }
        if (!order.empty()) text += ", " + order;
        return text + ".";
    }
};

/// Puts a query into clauses.
class Explainer {
public:
    explicit Explainer(const QueryExplanation& setting)
        : setting_(setting), wording_(setting.now, setting.calendar) {}

    std::string sentence(const Query& query) {
        if (query.asksForTasks()) clauses_.subject = "Tasks";
        for (const QueryNode& child : query.root.children) {
            add(child);
        }
        return clauses_.sentence();
    }

private:
    void add(const QueryNode& node) {
        switch (node.kind) {
        case Kind::text: clauses_.contained.push_back(word(node.text)); break;
        case Kind::filter: addFilter(node.filter); break;
        case Kind::negation: addNegation(node.children.front()); break;
        case Kind::any: addAlternatives(node); break;
        case Kind::all: break;  // never below the root
        }
    }

    void addAlternatives(const QueryNode& node) {
        std::vector<std::string> words;
        for (const QueryNode& child : node.children) {
            if (child.kind != Kind::text) return clauses_.further.push_back(phrase(node));
            words.push_back(word(child.text));
        }
        clauses_.contained.push_back("either " + listed(words, "or"));
    }

    void addNegation(const QueryNode& node) {
        if (node.kind == Kind::text) return clauses_.excluded.push_back(word(node.text));
        if (node.kind != Kind::filter) return clauses_.further.push_back("not " + phrase(node));
        const auto clause = wording_.clause(node.filter);
        if (clause) clauses_.further.push_back("not " + *clause);
    }

    void addFilter(const QueryFilter& filter) {
        if (addToSubject(filter)) return;
        if (filter.field == QueryField::sort) {
            clauses_.order = orderOf(filter);
            return;
        }
        auto clause = wording_.clause(filter);
        if (!clause) return;
        const bool isAttached =
            filter.field == QueryField::notebook || filter.field == QueryField::tag;
        (isAttached ? clauses_.attached : clauses_.further).push_back(std::move(*clause));
    }

    /// What is said of the notes themselves: "Notes", "in the trash".
    bool addToSubject(const QueryFilter& filter) {
        const auto says = [&](std::string_view value) {
            return filter.values.size() == 1 && filter.says(value);
        };
        if (filter.field == QueryField::scope) {
            clauses_.trash = says("trash") ? "in the trash" : "in the trash or not";
            return true;
        }
        if (filter.field != QueryField::is) return false;
        if (says("trashed")) clauses_.trash = "in the trash";
        if (says("note")) clauses_.subject = "Notes";
        return says("trashed") || says("note") || says("task");
    }

    static std::string orderOf(const QueryFilter& filter) {
        if (filter.says("newest")) return "newest first";
        return filter.says("oldest") ? "oldest first" : "";
    }

    /// Any part of a query as it reads inside a sentence.
    std::string phrase(const QueryNode& node) {
        if (node.kind == Kind::text) return "containing " + word(node.text);
        if (node.kind == Kind::filter) return wording_.clause(node.filter).value_or("any");
        if (node.kind == Kind::negation) return "not " + phrase(node.children.front());
        std::vector<std::string> parts;
        for (const QueryNode& child : node.children) {
            parts.push_back(phrase(child));
        }
        if (node.kind == Kind::all) return listed(parts, "and");
        return "either " + listed(parts, "or");
    }

    std::string word(const QueryText& text) const {
        const std::string plain(withoutPunctuation(text.text));
        switch (text.form) {
        case Form::phrase: return strong("“" + text.text + "”");
        case Form::prefix: return strong(plain + "…");
        case Form::part: return strong("…" + plain + "…");
        case Form::word: break;
        }
        const auto synonyms = setting_.synonyms.of(plain);
        if (synonyms.empty()) return strong(plain);
        std::vector<std::string> others;
        others.reserve(synonyms.size());
        for (const std::string& synonym : synonyms) {
            others.push_back(strong(synonym));
        }
        return strong(plain) + " (and " + listed(others, "and") + ", your "
               + (others.size() == 1 ? "synonym)" : "synonyms)");
    }

    const QueryExplanation& setting_;
    FilterWording wording_;
    Clauses clauses_;
};

}  // namespace

std::string QueryExplanation::sentence(const Query& query) const {
    return Explainer(*this).sentence(query);
}

}  // namespace tesserine
