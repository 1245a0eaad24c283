#include "core/store/Predicate.h"

#include "core/store/PredicateTree.h"
#include "core/store/StoreFixture.h"

#include <map>
#include <random>

namespace tesserine {
namespace {

using test::StoreFixture;

/// Random libraries, conditions and orders over whatever the model declares.
class Generator {
public:
    explicit Generator(std::uint32_t seed) : engine_(seed) {}

    /// An argument: a value, or an object by its place among those of its entity.
    struct Argument {
        PredicateArgument value{};
        std::optional<std::pair<EntityKind, std::size_t>> object{};
    };
    struct Condition {
        std::string format;
        std::vector<Argument> arguments;
    };

    static constexpr std::size_t objectsPerEntity = 9;
    static constexpr std::size_t maximumArguments = 4;

    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(engine_);
    }
    bool chance(int percent) { return below(100) < static_cast<std::size_t>(percent); }

    void fill(StoreContext& context) {
        std::map<EntityKind, std::vector<StoreObject*>> made;
        for (const auto& entity : Schema::library().entities()) {
            for (std::size_t i = 0; i < objectsPerEntity; ++i) {
                StoreObject& object = context.insertObject(entity.kind);
                for (std::size_t a = 0; a < entity.attributes.size(); ++a) {
                    if (chance(75)) object.setValue(a, value(entity.attributes[a].type));
                }
                made[entity.kind].push_back(&object);
            }
        }
        for (auto& [kind, objects] : made) {
            const auto& relationships = Schema::library()[kind].relationships;
            for (StoreObject* object : objects) {
                for (std::size_t r = 0; r < relationships.size(); ++r) {
                    StoreObject* other =
                        made[relationships[r].destination][below(objectsPerEntity)];
                    if (chance(50)) link(context, *object, r, *other);
                }
            }
        }
    }

    Condition condition(EntityKind kind) {
        Condition made;
        made.format = alternatives(kind, made.arguments, 2);
        return made;
    }

    std::vector<SortDescriptor> order(EntityKind kind) {
        std::vector<SortDescriptor> sort;
        const auto& attributes = Schema::library()[kind].attributes;
        while (sort.size() < 3 && chance(50)) {
            const auto& attribute = attributes[below(attributes.size())];
            if (attribute.type == AttributeType::binary) continue;
            using Order = SortDescriptor::Order;
            sort.push_back({attribute.name, chance(50) ? Order::ascending : Order::descending});
        }
        return sort;
    }

private:
    static void link(
        StoreContext& context, StoreObject& object, std::size_t relationship, StoreObject& other) {
        if (object.entity().relationships[relationship].isToMany) {
            context.relate(object, relationship, other);
        } else {
            object.setTarget(relationship, &other);
        }
    }

    std::string text() {
        static const std::vector<std::string> texts{
            "",       "a",    "A",    "é",   "É",   "e\u0301", "straße",     "STRASSE",
            "Café",   "cafe", "İ",    "i",   "ı",   "日本",    "x%y_z",      "a'b\"",
            "needle", "NEED", "12:3", "12:", "ΣΊΣ", "σίς",     "\U0001F600",
        };
        return texts[below(texts.size())];
    }
    Uuid identifier() {
        std::array<std::uint8_t, 16> bytes{};
        bytes[below(2) * 15] = static_cast<std::uint8_t>(below(3) * 100);
        return Uuid(bytes);
    }
    Instant instant() {
        return Instant::fromSeconds(1'770'000'000.125 + static_cast<double>(below(4)));
    }
    std::int64_t integer() {
        static constexpr std::int64_t beyondDouble = std::int64_t{1} << 53;
        static constexpr std::int64_t numbers[] = {-1, 0, 1, 4, beyondDouble, beyondDouble + 1};
        return numbers[below(std::size(numbers))];
    }
    double real() { return static_cast<double>(below(5)) / 2 - 1; }

    Value value(AttributeType type) {
        if (chance(20)) return {};
        switch (type) {
        case AttributeType::boolean: return chance(50);
        case AttributeType::int16: return static_cast<std::int16_t>(below(5));
        case AttributeType::int64: return integer();
        case AttributeType::real: return real();
        case AttributeType::string: return text();
        case AttributeType::date: return instant();
        case AttributeType::uuid: return identifier();
        case AttributeType::binary: break;
        }
        return Bytes(below(3), 7);
    }

    std::string alternatives(EntityKind kind, std::vector<Argument>& arguments, int depth) {
        if (depth == 0 || chance(30)) return comparison(kind, arguments);
        if (chance(20)) return "NOT (" + alternatives(kind, arguments, depth - 1) + ")";
        const std::string first = alternatives(kind, arguments, depth - 1);
        const std::string second = alternatives(kind, arguments, depth - 1);
        return "(" + first + (chance(50) ? " AND " : " OR ") + second + ")";
    }

    /// A walk of up to two relationships and what is compared at its end.
    std::string comparison(EntityKind kind, std::vector<Argument>& arguments) {
        std::string path;
        bool crossesToMany = false;
        EntityKind here = kind;
        for (int step = 0; step < 2 && chance(35); ++step) {
            const auto& relationships = Schema::library()[here].relationships;
            if (relationships.empty()) break;
            const auto& walked = relationships[below(relationships.size())];
            path += walked.name + ".";
            crossesToMany = crossesToMany || walked.isToMany;
            here = walked.destination;
        }
        const EntityDescription& entity = Schema::library()[here];
        std::string ending;
        if (chance(25) && !entity.relationships.empty()) {
            const auto& last = entity.relationships[below(entity.relationships.size())];
            crossesToMany = crossesToMany || last.isToMany;
            // "ANY tags == nil" asks nothing that makes sense.
            ending = last.name + objectComparison(last.destination, !last.isToMany, arguments);
        } else if (chance(15)) {
            ending = "SELF" + objectComparison(here, false, arguments);
        } else {
            const auto& attribute = entity.attributes[below(entity.attributes.size())];
            ending = attribute.name + attributeComparison(attribute.type, arguments);
        }
        return (crossesToMany ? "ANY " : "") + path + ending;
    }

    std::string objectComparison(EntityKind kind, bool mayBeNil, std::vector<Argument>& arguments) {
        const std::string operation = chance(60) ? " == " : " != ";
        if (mayBeNil && chance(40)) return operation + "nil";
        Argument object;
        object.object.emplace(kind, below(objectsPerEntity));
        return operation + argument(object, "nil", arguments);
    }

    std::string attributeComparison(AttributeType type, std::vector<Argument>& arguments) {
        static constexpr const char* operations[] = {
            " == ", " != ", " < ", " <= ", " > ", " >= ", " ==[c] ", " CONTAINS[cd] "};
        const bool isText = type == AttributeType::string;
        const bool isEqualityOnly = type == AttributeType::boolean || type == AttributeType::binary;
        const std::string operation = operations[below(isEqualityOnly ? 2 : isText ? 8 : 6)];
        const bool isEquality = operation == " == " || operation == " != ";
        if (type == AttributeType::binary || (isEquality && chance(20))) return operation + "nil";
        switch (type) {
        case AttributeType::boolean:
            if (chance(20)) return operation + argument({.value = chance(50)}, "YES", arguments);
            return operation + (chance(50) ? "YES" : "NO");
        case AttributeType::int16:
        case AttributeType::int64:
        case AttributeType::real:
            if (chance(30)) return operation + std::to_string(integer());
            if (chance(30)) return operation + argument({.value = real()}, "0", arguments);
            return operation + argument({.value = integer()}, "1", arguments);
        case AttributeType::string:
            return operation + argument({.value = text()}, "nil", arguments);
        case AttributeType::date:
            return operation + argument({.value = instant()}, "nil", arguments);
        case AttributeType::uuid:
            return operation + argument({.value = identifier()}, "nil", arguments);
        case AttributeType::binary: break;
        }
        return operation + "nil";
    }

    /// A `%@`, or `otherwise` when all are used.
    static std::string argument(
        const Argument& made, const std::string& otherwise, std::vector<Argument>& arguments) {
        if (arguments.size() == maximumArguments) return otherwise;
        arguments.push_back(made);
        return "%@";
    }

    std::mt19937 engine_;
};

/// All objects of a context by entity, in the order of their rows.
class Population {
public:
    explicit Population(StoreContext& context) : context_(context) {
        for (const auto& entity : Schema::library().entities()) {
            objects_[entity.kind] = context.fetchObjects(entity.kind, {});
        }
    }

    /// Makes every object of `kind` pending without giving it another value.
    void touch(EntityKind kind) {
        for (StoreObject* object : objects_[kind]) {
            std::size_t attribute = 0;
            while (object->entity().attributes[attribute].type != AttributeType::string) {
                ++attribute;
            }
            const Value before = object->value(attribute);
            object->setValue(attribute, std::string("touched"));
            object->setValue(attribute, before);
        }
    }

    Predicate predicate(const Generator::Condition& condition) {
        std::array<PredicateArgument, Generator::maximumArguments> values;
        for (std::size_t i = 0; i < condition.arguments.size(); ++i) {
            const auto& argument = condition.arguments[i];
            values[i] =
                argument.object
                    ? PredicateArgument(objects_[argument.object->first][argument.object->second])
                    : argument.value;
        }
        return {condition.format, values[0], values[1], values[2], values[3]};
    }

    std::vector<std::int64_t> keys(EntityKind kind, const FetchRequest& request) {
        std::vector<std::int64_t> keys;
        for (const StoreObject* object : context_.fetchObjects(kind, request)) {
            keys.push_back(object->key());
        }
        return keys;
    }

private:
    StoreContext& context_;
    std::map<EntityKind, std::vector<StoreObject*>> objects_;
};

class PredicateTest : public StoreFixture {};

TEST_F(PredicateTest, RowsAndPendingObjectsMeetTheSameConditionsInTheSameOrder) {
    const auto store = open();
    const auto clean = store->newBackgroundContext();
    const auto mixed = store->newBackgroundContext();
    for (std::uint32_t seed = 1; seed <= 3; ++seed) {
        Generator generator(seed);
        for (const auto& entity : Schema::library().entities()) {
            for (StoreObject* object : store->viewContext().fetchObjects(entity.kind, {})) {
                store->viewContext().remove(*object);
            }
        }
        generator.fill(store->viewContext());
        store->viewContext().save();
        clean->reset();
        mixed->reset();
        const auto dirty = store->newBackgroundContext();
        Population saved(*clean);
        Population related(*mixed);
        Population pending(*dirty);
        for (const auto& entity : Schema::library().entities()) {
            pending.touch(entity.kind);
        }
        related.touch(EntityKind::tag);
        related.touch(EntityKind::notebook);

        int matches = 0;
        for (int round = 0; round < 400; ++round) {
            const EntityKind kind = Schema::library().entities()[generator.below(entityCount)].kind;
            const auto condition = generator.condition(kind);
            FetchRequest request{
                .sort = generator.order(kind),
                .limit = generator.below(4) * 2,
                .offset = generator.below(3)};
            SCOPED_TRACE(
                "seed " + std::to_string(seed) + ": " + Schema::library()[kind].name + " "
                + condition.format);
            request.predicate = saved.predicate(condition);
            const auto wanted = saved.keys(kind, request);
            matches += wanted.empty() ? 0 : 1;
            request.predicate = pending.predicate(condition);
            ASSERT_EQ(pending.keys(kind, request), wanted) << "everything pending";
            request.predicate = related.predicate(condition);
            ASSERT_EQ(related.keys(kind, request), wanted) << "tags and notebooks pending";
        }
        EXPECT_GT(matches, 100) << "conditions that nothing meets show little";
    }
}

TEST_F(PredicateTest, NullsEqualNilOnlyAndCountAsNo) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDNote& null = addNote(context, "null", "");
    null.isTemplate = std::nullopt;
    null.sourceURL = std::nullopt;
    CDNote& no = addNote(context, "no", "");
    no.isTemplate = false;
    no.sourceURL = "a";
    CDNote& yes = addNote(context, "yes", "");
    yes.isTemplate = true;
    yes.sourceURL = "b";
    for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass == 0 ? "pending" : "saved");
        const auto having = [&](const Predicate& predicate) {
            return titles(context.fetch<CDNote>({.predicate = predicate}));
        };
        EXPECT_EQ(having({"isTemplate == NO"}), "null no ");
        EXPECT_EQ(having({"isTemplate != YES"}), "null no ");
        EXPECT_EQ(having({"isTemplate == nil"}), "null ");
        EXPECT_EQ(having({"NOT isTemplate == YES"}), "null no ");
        EXPECT_EQ(having({"sourceURL != %@", "a"}), "null yes ");
        EXPECT_EQ(having({"NOT sourceURL == %@", "a"}), "null yes ");
        EXPECT_EQ(having({"sourceURL < %@", "b"}), "no ");
        EXPECT_EQ(having({"sourceURL ==[c] nil"}), "null ");
        EXPECT_EQ(having({"notebook == nil AND NOT notebook.name == %@", "x"}), "null no yes ");
        context.save();
    }
}

TEST(Predicate, EveryConditionOfTheProgramReads) {
    const std::pair<EntityKind, const char*> conditions[] = {
        {EntityKind::note, "trashedAt != nil"},
        {EntityKind::note, "trashedAt != nil AND trashedAt < %@"},
        {EntityKind::note, "importFingerprint == %@ AND trashedAt == nil"},
        {EntityKind::note, "isTemplate == NO"},
        {EntityKind::note, "trashedAt == nil AND isTemplate == NO"},
        {EntityKind::note, "isTemplate == YES AND trashedAt == nil"},
        {EntityKind::note,
         "trashedAt == nil AND isTemplate == NO AND reminderAt != nil AND reminderAt >= %@"},
        {EntityKind::note,
         "id != %@ AND isTemplate == NO AND trashedAt == nil AND html CONTAINS[cd] %@"},
        {EntityKind::note, "id == %@"},
        {EntityKind::note, "trashedAt == nil"},
        {EntityKind::notebook, "name ==[c] %@ AND parent == nil"},
        {EntityKind::notebook, "name ==[c] %@ AND parent.id == %@"},
        {EntityKind::notebook, "parent == nil"},
        {EntityKind::tag, "name ==[c] %@"},
        {EntityKind::tag, "name ==[c] %@ AND SELF != %@"},
        {EntityKind::task, "completedAt == nil AND project.isInbox == YES AND parent == nil"},
        {EntityKind::task,
         "completedAt == nil AND dueDate != nil AND dueDate < %@ AND parent == nil"},
        {EntityKind::task, "completedAt == nil AND dueDate >= %@ AND parent == nil"},
        {EntityKind::task, "completedAt == nil AND parent == nil"},
        {EntityKind::task, "completedAt != nil"},
        {EntityKind::task, "completedAt == nil AND project.id == %@ AND parent == nil"},
        {EntityKind::task, "completedAt == nil AND ANY labels.name ==[c] %@ AND parent == nil"},
        {EntityKind::task, "dueDate != nil AND dueDate >= %@ AND dueDate < %@ AND parent == nil"},
        {EntityKind::task, "completedAt == nil AND reminderAt != nil AND reminderAt >= %@"},
        {EntityKind::task, "id == %@"},
        {EntityKind::project, "isInbox == YES"},
        {EntityKind::project, "name ==[c] %@"},
        {EntityKind::savedSearch, ""},
    };
    for (const auto& [kind, format] : conditions) {
        SCOPED_TRACE(format);
        EXPECT_NO_THROW(PredicateTree::parse(format, kind));
    }
}

TEST_F(PredicateTest, AMistakeInAConditionIsAnErrorEachTimeItIsUsed) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    addNote(context, "n", "");
    context.save();
    for (const char* format :
         {"colour == %@",
          "title",
          "title =",
          "title == ",
          "title == %@ AND",
          "title == %@ title",
          "(title == %@",
          "title == %@)",
          "tags.name == %@",
          "ANY title == %@",
          "notebook.colour == nil",
          "title.name == nil",
          "NOT",
          "title IN %@",
          "title == %@ AND html == %@"}) {  // the second argument is missing
        SCOPED_TRACE(format);
        for (int use = 1; use <= 2; ++use) {
            EXPECT_THROW(
                context.fetch<CDNote>({.predicate = {format, std::string("x")}}), std::logic_error);
        }
    }
    EXPECT_THROW(context.fetch<CDNote>({.sort = {{"colour"}}}), std::logic_error);
    EXPECT_EQ(context.count<CDNote>(), 1U);
}

}  // namespace
}  // namespace tesserine
