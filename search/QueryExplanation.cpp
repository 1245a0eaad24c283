#include "search/QueryExplanation.h"

#include "base/Text.h"
#include "search/QueryCharacters.h"
#include "search/QueryTimes.h"
#include "search/SearchStatement.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tesserine {

namespace {

using Kind = QueryNode::Kind;
using Form = QueryText::Form;

std::string strong(std::string_view text) {
    return std::string(marker::open) + std::string(text) + std::string(marker::close);
}

/// "a", "a or b", "a, b or c".
std::string listed(const std::vector<std::string>& items, std::string_view last) {
    std::string list;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) list += i + 1 == items.size() ? " " + std::string(last) + " " : ", ";
        list += items[i];
    }
    return list;
}

/// The parts of one sentence, in the order in which they are said.
struct Clauses {
    std::vector<std::string> kinds;     ///< "note", "task"
    std::string trash;                  ///< "in the trash"
    std::vector<std::string> attached;  ///< follow the subject without a comma
    std::vector<std::string> further;   ///< each after a comma
    std::vector<std::string> contained;
    std::vector<std::string> excluded;
    std::string order;
};

class Explainer {
public:
    explicit Explainer(const QueryExplanation& setting) : setting_(setting) {}

    std::string sentence(const Query& query) {
        if (query.asksForTasks()) clauses_.kinds = {"Tasks"};
        for (const QueryNode& child : query.root.children) {
            add(child);
        }
        std::string text = clauses_.kinds.empty() ? "Notes and tasks" : clauses_.kinds.front();
        if (!clauses_.trash.empty()) text += " " + clauses_.trash;
        for (const std::string& clause : clauses_.attached) {
            text += " " + clause;
        }
        std::vector<std::string> further = clauses_.further;
        if (!clauses_.contained.empty()) {
            further.push_back("containing " + listed(clauses_.contained, "and"));
        }
        if (!clauses_.excluded.empty()) {
            further.push_back("but not " + listed(clauses_.excluded, "nor"));
        }
        // The first one needs no comma when nothing stands between it and the subject.
        for (std::size_t i = 0; i < further.size(); ++i) {
            const bool isFirst = i == 0 && clauses_.attached.empty();
            text += (isFirst ? " " : ", ") + further[i];
        }
        if (!clauses_.order.empty()) text += ", " + clauses_.order;
        return text + ".";
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
        const bool areWords = std::ranges::all_of(
            node.children, [](const QueryNode& child) { return child.kind == Kind::text; });
        if (!areWords) {
            clauses_.further.push_back(phrase(node));
            return;
        }
        std::vector<std::string> words;
        for (const QueryNode& child : node.children) {
            words.push_back(word(child.text));
        }
        const bool isAlone = words.size() == 1;
        clauses_.contained.push_back(isAlone ? words.front() : "either " + listed(words, "or"));
    }

    void addNegation(const QueryNode& node) {
        if (node.kind == Kind::text) {
            clauses_.excluded.push_back(word(node.text));
        } else if (node.kind == Kind::filter) {
            if (const auto clause = ofFilter(node.filter)) {
                clauses_.further.push_back("not " + *clause);
            }
        } else {
            clauses_.further.push_back("not " + phrase(node));
        }
    }

    void addFilter(const QueryFilter& filter) {
        if (addSubject(filter)) return;
        if (filter.field == QueryField::sort) {
            clauses_.order = orderOf(filter);
            return;
        }
        auto clause = ofFilter(filter);
        if (!clause) return;
        const bool isAttached =
            filter.field == QueryField::notebook || filter.field == QueryField::tag;
        (isAttached ? clauses_.attached : clauses_.further).push_back(std::move(*clause));
    }

    /// What is said of the notes themselves: "Notes", "in the trash".
    bool addSubject(const QueryFilter& filter) {
        const auto says = [&](std::string_view value) {
            return filter.values.size() == 1 && filter.says(value);
        };
        if (filter.field == QueryField::scope) {
            clauses_.trash = says("trash") ? "in the trash" : "in the trash or not";
            return true;
        }
        if (filter.field != QueryField::is) return false;
        if (says("trashed")) clauses_.trash = "in the trash";
        if (says("note")) clauses_.kinds = {"Notes"};
        return says("trashed") || says("note") || says("task");
    }

    static std::string orderOf(const QueryFilter& filter) {
        if (filter.says("newest")) return "newest first";
        return filter.says("oldest") ? "oldest first" : "";
    }

    /// Any part of a query as it reads inside a sentence.
    std::string phrase(const QueryNode& node) {
        if (node.kind == Kind::text) return "containing " + word(node.text);
        if (node.kind == Kind::filter) return ofFilter(node.filter).value_or("any");
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
        for (const std::string& synonym : synonyms) {
            others.push_back(strong(synonym));
        }
        return strong(plain) + " (and " + listed(others, "and") + ", your "
               + (others.size() == 1 ? "synonym)" : "synonyms)");
    }

    /// None for a filter that says nothing that could be understood.
    std::optional<std::string> ofFilter(const QueryFilter& filter) const {
        if (filter.field == QueryField::edited) return timed("edited", filter);
        if (filter.field == QueryField::due) return timed("due", filter);
        if (filter.field == QueryField::near) return near(filter);
        static constexpr std::array writing{
            QueryField::before, QueryField::after, QueryField::created};
        const bool isWriting = std::ranges::find(writing, filter.field) != writing.end();
        if (isWriting) return timed("written", filter);
        std::vector<std::string> values;
        for (const QueryValue& value : filter.values) {
            values.push_back(ofValue(filter, value));
        }
        return listed(values, "or");
    }

    static std::string ofValue(const QueryFilter& filter, const QueryValue& value) {
        const bool isNone = !value.isQuoted && text::asciiLowercased(value.text) == "none";
        const bool isExact = filter.comparison == QueryFilter::Comparison::equal;
        const std::string shown =
            strong(std::string(value.stem()) + (value.isBeginning() ? "…" : ""));
        switch (filter.field) {
        case QueryField::tag:
            if (isNone) return "without tags";
            return (isExact ? "with just " : "with ") + strong("#" + value.text);
        case QueryField::notebook:
            if (isNone) return "in no notebook";
            return (isExact ? "directly in " : "in ") + shown;
        case QueryField::type: return "with an attachment of type " + shown;
        case QueryField::has: return belonging(value);
        case QueryField::is: return "that are " + shown;
        case QueryField::title: return "with " + shown + " in the title";
        case QueryField::body: return "with " + shown + " in the text";
        case QueryField::file: return "with a file named " + shown;
        case QueryField::priority: return "of priority " + priority(filter, value);
        case QueryField::amount: return "with the amount " + shown;
        case QueryField::account: return "with the account number " + shown;
        case QueryField::scope: return value.text == "trash" ? "in the trash" : "anywhere";
        case QueryField::before:
        case QueryField::after:
        case QueryField::created:
        case QueryField::edited:
        case QueryField::due:
        case QueryField::near:
        case QueryField::sort: break;  // not said value by value
        }
        return shown;
    }

    static std::string belonging(const QueryValue& value) {
        static constexpr std::array<std::pair<std::string_view, std::string_view>, 5> clauses{{
            {"attachment", "with an attachment"},
            {"text", "with text in an attachment"},
            {"location", "with a place"},
            {"reminder", "with a reminder"},
            {"tag", "with a tag"},
        }};
        const std::string name = text::asciiLowercased(value.text);
        for (const auto& [known, clause] : clauses) {
            if (name == known) return std::string(clause);
        }
        return "with an attachment of type " + strong(value.text);
    }

    static std::string priority(const QueryFilter& filter, const QueryValue& value) {
        static constexpr std::array<std::string_view, 6> signs{
            "", "", "at least ", "at most ", "above ", "below "};
        const std::string to = value.upTo ? " to " + *value.upTo : "";
        return std::string(signs[static_cast<std::size_t>(filter.comparison)])
               + strong(value.text + to);
    }

    static std::string near(const QueryFilter& filter) {
        std::vector<std::string> parts;
        for (const QueryValue& value : filter.values) {
            parts.push_back(value.text);
        }
        const std::string distance = parts.size() == 3 ? parts[2] : "10km";
        parts.resize(std::min<std::size_t>(parts.size(), 2));
        const std::string place = parts.size() == 2 ? parts[0] + ", " + parts[1] : parts.front();
        return "written within " + strong(distance) + " of " + strong(place);
    }

    std::optional<std::string> timed(std::string_view verb, const QueryFilter& filter) const {
        std::vector<std::string> times;
        for (const QueryValue& value : filter.values) {
            const std::string text = text::asciiLowercased(value.text);
            if (filter.field == QueryField::due && (text == "none" || text == "any")) {
                times.push_back(text == "none" ? "never" : "some day");
            } else if (const auto time = timeOf(filter, value, setting_.now, setting_.calendar)) {
                times.push_back(shown(*time, value));
            }
        }
        if (times.empty()) return std::nullopt;
        return std::string(verb) + " " + listed(times, "or");
    }

    /// "in 2025", "on 1 March", "since 1 March", "before 2 January 2025", "from … to …".
    std::string shown(const filter::TimeSpan& time, const QueryValue& value) const {
        if (!time.begin) return "before " + strong(day(*time.end));
        if (!time.end) return "since " + strong(day(*time.begin));
        const auto date = parseQueryDate(value.text, setting_.now, setting_.calendar);
        const LocalTime begin = setting_.calendar.local(*time.begin);
        if (!value.upTo && date->scope == DateScope::year) {
            return "in " + strong(std::to_string(begin.year));
        }
        if (!value.upTo && date->scope == DateScope::month) {
            const std::string longDate = setting_.calendar.longDate(*time.begin);
            return "in " + strong(longDate.substr(longDate.find(' ') + 1));
        }
        const Instant last = setting_.calendar.addDays(*time.end, -1);
        if (setting_.calendar.isSameDay(*time.begin, last)) return "on " + strong(day(last));
        return "from " + strong(day(*time.begin)) + " to " + strong(day(last));
    }

    /// Without the year when it is this one.
    std::string day(Instant instant) const {
        std::string text = setting_.calendar.longDate(instant);
        const Calendar& calendar = setting_.calendar;
        const bool isThisYear = calendar.local(instant).year == calendar.local(setting_.now).year;
        if (isThisYear) text.resize(text.rfind(' '));
        return text;
    }

    const QueryExplanation& setting_;
    Clauses clauses_;
};

}  // namespace

std::string QueryExplanation::sentence(const Query& query) const {
    return Explainer(*this).sentence(query);
}

}  // namespace tesserine
