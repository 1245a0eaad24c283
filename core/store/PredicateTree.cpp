#include "core/store/PredicateTree.h"

#include "base/Text.h"

#include <array>
#include <cassert>
#include <charconv>
#include <stdexcept>

namespace tesserine {
namespace {

using Operator = PredicateTree::Operator;

/// Reads one predicate; every failure is a mistake in our own text.
class Reader {
public:
    Reader(const std::string& format, EntityKind entity) : rest_(format), entity_(entity) {}

    PredicateTree read() {
        skipSpace();
        if (rest_.empty()) return {};
        PredicateTree tree = alternatives();
        if (!rest_.empty()) fail("end expected");
        return tree;
    }

private:
    PredicateTree alternatives() {
        return list(PredicateTree::Kind::any, "OR", [this] { return conjunction(); });
    }
    PredicateTree conjunction() {
        return list(PredicateTree::Kind::all, "AND", [this] { return condition(); });
    }

    template <class ReadOne>
    PredicateTree list(PredicateTree::Kind kind, std::string_view word, ReadOne readOne) {
        PredicateTree first = readOne();
        if (!peek(word)) return first;
        PredicateTree tree{.kind = kind, .children = {std::move(first)}};
        while (take(word)) {
            tree.children.push_back(readOne());
        }
        return tree;
    }

    PredicateTree condition() {
        if (take("NOT")) return {.kind = PredicateTree::Kind::negation, .children = {condition()}};
        if (take("(")) {
            PredicateTree inner = alternatives();
            if (!take(")")) fail(") expected");
            return inner;
        }
        return comparison();
    }

    PredicateTree comparison() {
        PredicateTree tree{.kind = PredicateTree::Kind::comparison, .entity = entity_};
        const bool isAny = take("ANY");
        bool crossesToMany = false;
        readPath(tree, crossesToMany);
        if (isAny != crossesToMany) fail("ANY stands before paths through to-many relationships");
        tree.operation = readOperator();
        readValue(tree);
        return tree;
    }

    void readPath(PredicateTree& tree, bool& crossesToMany) {
        const Schema& schema = Schema::library();
        const EntityDescription* entity = &schema[entity_];
        while (true) {
            const std::string_view name = readName();
            if (name == "SELF") {
                tree.ending = PredicateTree::Ending::self;
                return;
            }
            if (const auto attribute = entity->attributeNamed(name)) {
                tree.ending = PredicateTree::Ending::attribute;
                tree.index = *attribute;
                return;
            }
            const auto relationship = entity->relationshipNamed(name);
            if (!relationship) fail("unknown name " + std::string(name));
            const RelationshipDescription& walked = entity->relationships[*relationship];
            const bool goesOn = take(".");
            if (!goesOn && !walked.isToMany) {
                tree.ending = PredicateTree::Ending::relationship;
                tree.index = *relationship;
                return;
            }
            crossesToMany = crossesToMany || walked.isToMany;
            tree.path.push_back(*relationship);
            if (!goesOn) {  // ANY tags == %@
                tree.ending = PredicateTree::Ending::self;
                return;
            }
            entity = &schema[walked.destination];
        }
    }

    Operator readOperator() {
        static constexpr std::array<std::pair<std::string_view, Operator>, 8> operators{{
            {"==[c]", Operator::equalFolded},
            {"==", Operator::equal},
            {"!=", Operator::notEqual},
            {"<=", Operator::lessOrEqual},
            {">=", Operator::greaterOrEqual},
            {"<", Operator::less},
            {">", Operator::greater},
            {"CONTAINS[cd]", Operator::containsFolded},
        }};
        for (const auto& [text, operation] : operators) {
            if (take(text)) return operation;
        }
        fail("operator expected");
    }

    void readValue(PredicateTree& tree) {
        if (take("%@")) {
            tree.argument = argumentCount_++;
        } else if (take("nil")) {
            tree.literal = std::monostate{};
        } else if (take("YES")) {
            tree.literal = true;
        } else if (take("NO")) {
            tree.literal = false;
        } else {
            std::int64_t number = 0;
            const auto [end, error] =
                std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
            if (error != std::errc{}) fail("value expected");
            rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
            tree.literal = number;
            skipSpace();
        }
    }

    std::string_view readName() {
        std::size_t length = 0;
        while (length < rest_.size() && isNameCharacter(rest_[length])) {
            ++length;
        }
        if (length == 0) fail("name expected");
        const std::string_view name = rest_.substr(0, length);
        rest_.remove_prefix(length);
        skipSpace();
        return name;
    }

    bool peek(std::string_view token) const {
        if (!rest_.starts_with(token)) return false;
        const bool endsInLetter = isNameCharacter(token.back());
        return !endsInLetter || rest_.size() == token.size()
               || !isNameCharacter(rest_[token.size()]);
    }
    bool take(std::string_view token) {
        if (!peek(token)) return false;
        rest_.remove_prefix(token.size());
        skipSpace();
        return true;
    }
    static bool isNameCharacter(char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    }
    void skipSpace() {
        while (!rest_.empty() && rest_.front() == ' ') {
            rest_.remove_prefix(1);
        }
    }
    [[noreturn]] void fail(const std::string& why) const {
        throw std::logic_error("bad predicate: " + why + " at “" + std::string(rest_) + "”");
    }

    std::string_view rest_;
    EntityKind entity_;
    std::size_t argumentCount_ = 0;
};

}  // namespace

PredicateTree PredicateTree::parse(const std::string& format, EntityKind entity) {
    return Reader(format, entity).read();
}

bool PredicateTree::looksAt(EntityKind wanted) const {
    for (const PredicateTree& child : children) {
        if (child.looksAt(wanted)) return true;
    }
    const EntityDescription* from = &Schema::library()[entity];
    for (const std::size_t relationship : path) {
        const EntityKind destination = from->relationships[relationship].destination;
        if (destination == wanted) return true;
        from = &Schema::library()[destination];
    }
    return false;
}

bool containsFolded(std::string_view text, std::string_view part) {
    if (part.empty()) return true;
    if (text.find(part) != std::string_view::npos) return true;
    // What folding cannot produce must stand in the text as it is: a quick no for most texts.
    static constexpr std::string_view unfolded = "0123456789:/-";
    const std::size_t begin = part.find_first_of(unfolded);
    if (begin != std::string_view::npos) {
        const std::size_t end = part.find_first_not_of(unfolded, begin);
        if (text.find(part.substr(begin, end - begin)) == std::string_view::npos) return false;
    }
    return text::folded(text).find(text::folded(part)) != std::string::npos;
}

}  // namespace tesserine
