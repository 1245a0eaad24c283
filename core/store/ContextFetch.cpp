#include "core/store/ContextState.h"

#include <algorithm>
#include <compare>
#include <stdexcept>

namespace tesserine {
namespace {

/// As SQLite orders cells: null first, then numbers or bytes.
std::weak_ordering orderOf(const Value& a, const Value& b) {
    if (isNull(a) || isNull(b)) return !isNull(a) <=> !isNull(b);
    if (a < b) return std::weak_ordering::less;
    if (b < a) return std::weak_ordering::greater;
    return std::weak_ordering::equivalent;
}

/// A name the entity does not have is a mistake of ours, like one in a predicate.
std::size_t sortAttribute(const EntityDescription& entity, const SortDescriptor& descriptor) {
    if (const auto attribute = entity.attributeNamed(descriptor.attribute)) return *attribute;
    throw std::logic_error("bad sort descriptor: unknown name " + descriptor.attribute);
}

/// Whether only some of the rows are wanted; a limit of 0 is none.
bool isPart(std::size_t limit, std::size_t offset) { return limit > 0 || offset > 0; }

void bindWhere(
    Statement& row, const PredicateSQL& condition, std::size_t limit, std::size_t offset) {
    condition.bind(row);
    if (!isPart(limit, offset)) return;
    const int place = static_cast<int>(condition.values.size()) + 1;
    row.bindInteger(place, limit == 0 ? -1 : static_cast<std::int64_t>(limit));
    row.bindInteger(place + 1, static_cast<std::int64_t>(offset));
}

}  // namespace

const PredicateTree& StoreContext::State::tree(EntityKind kind, const std::string& format) {
    const std::pair key(kind, format);
    const auto found = predicates.find(key);
    if (found != predicates.end()) return found->second;
    return predicates.emplace(key, PredicateTree::parse(format, kind)).first->second;
}

bool StoreContext::State::hasDirty(EntityKind kind) const {
    return std::ranges::any_of(
        pending, [&](const StoreObject* object) { return object->entity().kind == kind; });
}

bool StoreContext::State::dependsOnPending(const PredicateTree& tree) const {
    if (pending.empty()) return false;
    return std::ranges::any_of(
               Schema::library().entities(),
               [&](const EntityDescription& entity) {
                   return tree.looksAt(entity.kind) && hasDirty(entity.kind);
               })
           || (!links.empty() && std::ranges::any_of(links, [&](const auto& entry) {
                  return tree.looksAt(entry.first.first)
                         || tree.looksAt(Schema::library()[entry.first.first]
                                             .relationships[entry.first.second]
                                             .destination);
              }));
}

/// The column whose fetch index gives the order, so that no other index should be chosen for the
/// condition; empty when there is none.
std::string StoreContext::State::leadingColumn(
    EntityKind kind, const std::vector<SortDescriptor>& sort) {
    if (sort.empty()) return {};
    const EntityDescription& entity = Schema::library()[kind];
    const auto& attribute = entity.attributes[sortAttribute(entity, sort.front())];
    return attribute.isIndexed ? attribute.column : std::string();
}

std::string StoreContext::State::orderClause(
    EntityKind kind, const std::vector<SortDescriptor>& sort) const {
    const EntityDescription& entity = Schema::library()[kind];
    std::string clause;
    for (const SortDescriptor& descriptor : sort) {
        clause += clause.empty() ? " ORDER BY " : ", ";
        clause += entity.attributes[sortAttribute(entity, descriptor)].column;
        if (descriptor.order == SortDescriptor::Order::descending) clause += " DESC";
    }
    if (clause.empty()) return " ORDER BY Z_PK";
    if (entity.identity) clause += ", " + entity.attributes[*entity.identity].column;
    return clause + ", Z_PK";
}

void StoreContext::State::sortObjects(
    EntityKind kind,
    const std::vector<SortDescriptor>& sort,
    std::vector<StoreObject*>& objects) const {
    const EntityDescription& entity = Schema::library()[kind];
    const auto savedOrder = [](const StoreObject& object) {
        // Unsaved objects follow the saved ones in the order of their making.
        return std::pair(object.isInserted(), std::abs(object.key()));
    };
    std::ranges::stable_sort(objects, [&](StoreObject* a, StoreObject* b) {
        for (const SortDescriptor& descriptor : sort) {
            const std::size_t attribute = sortAttribute(entity, descriptor);
            const auto order = orderOf(a->value(attribute), b->value(attribute));
            if (std::is_eq(order)) continue;
            return std::is_lt(order) == (descriptor.order == SortDescriptor::Order::ascending);
        }
        if (!sort.empty() && entity.identity) {
            const auto order = orderOf(a->value(*entity.identity), b->value(*entity.identity));
            if (std::is_neq(order)) return std::is_lt(order);
        }
        return savedOrder(*a) < savedOrder(*b);
    });
}

std::string StoreContext::State::selectWhere(
    EntityKind kind,
    const PredicateSQL& condition,
    const std::vector<SortDescriptor>& sort,
    bool isPart) const {
    const RowMapper& mapper = core->mapper(kind);
    std::string sql = "SELECT " + mapper.headerColumns() + " FROM " + mapper.entity().table;
    if (condition.condition != "1") sql += " WHERE " + condition.condition;
    // "+Z_PK" keeps SQLite from reading the whole table for the sake of its order.
    const bool hasOwnOrder = sort.empty() && condition.hasIndexedRange;
    sql += hasOwnOrder ? " ORDER BY +Z_PK" : orderClause(kind, sort);
    if (isPart) sql += " LIMIT ? OFFSET ?";
    return sql;
}

std::vector<StoreObject*> StoreContext::State::rowsWhere(
    EntityKind kind,
    const PredicateSQL& condition,
    const std::vector<SortDescriptor>& sort,
    std::size_t limit,
    std::size_t offset) {
    Statement& row = reader().cached(selectWhere(kind, condition, sort, isPart(limit, offset)));
    bindWhere(row, condition, limit, offset);
    std::vector<StoreObject*> objects;
    while (row.step()) {
        objects.push_back(&objectFor(kind, row));
    }
    row.reset();
    return objects;
}

void StoreContext::visitObjectRows(
    EntityKind kind,
    const FetchRequest& request,
    const std::function<void(const ListedRow&)>& visit) {
    const auto guard = state_->core->reading();
    State& state = *state_;
    const PredicateTree& tree = state.tree(kind, request.predicate.format());
    if (state.hasDirty(kind) || state.dependsOnPending(tree)) {
        for (StoreObject* object : fetchObjects(kind, request)) {
            visit(ListedRow(*object));
        }
        return;
    }
    readingLibrary([&] {
        const auto condition = PredicateSQL::compile(
            tree, request.predicate.arguments(), State::leadingColumn(kind, request.sort));
        // A statement of its own, because `visit` may fetch the same.
        Statement row = state.reader().prepare(state.selectWhere(
            kind, condition, request.sort, isPart(request.limit, request.offset)));
        bindWhere(row, condition, request.limit, request.offset);
        while (row.step()) {
            visit(ListedRow(state.core->mapper(kind), row));
        }
    });
}

std::vector<StoreObject*> StoreContext::fetchObjects(EntityKind kind, const FetchRequest& request) {
    const auto guard = state_->core->reading();
    State& state = *state_;
    return readingLibrary([&]() -> std::vector<StoreObject*> {
        const PredicateTree& tree = state.tree(kind, request.predicate.format());
        const auto& arguments = request.predicate.arguments();
        const auto condition =
            PredicateSQL::compile(tree, arguments, State::leadingColumn(kind, request.sort));
        if (!state.hasDirty(kind) && !state.dependsOnPending(tree)) {
            return state.rowsWhere(kind, condition, request.sort, request.limit, request.offset);
        }
        // Committed rows answer for what is clean, memory for what is pending.
        std::vector<StoreObject*> result;
        const bool asksMemory = state.dependsOnPending(tree);
        std::size_t dirtyCount = 0;
        for (StoreObject* object : state.pending) {
            if (object->entity().kind != kind) continue;
            ++dirtyCount;
            if (!object->isDeleted() && evaluate(tree, arguments, *object)) {
                result.push_back(object);
            }
        }
        const std::size_t wanted =
            request.limit == 0 ? 0 : request.limit + request.offset + dirtyCount;
        const auto rows = asksMemory ? state.rowsWhere(kind, {.condition = "1"}, request.sort, 0, 0)
                                     : state.rowsWhere(kind, condition, request.sort, wanted, 0);
        for (StoreObject* object : rows) {
            if (state.isDirty(*object) || object->isDeleted()) continue;
            if (!asksMemory || evaluate(tree, arguments, *object)) result.push_back(object);
        }
        state.sortObjects(kind, request.sort, result);
        const auto skipped = std::min(request.offset, result.size());
        result.erase(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(skipped));
        if (request.limit > 0 && result.size() > request.limit) result.resize(request.limit);
        return result;
    });
}

std::size_t StoreContext::countObjects(EntityKind kind, const Predicate& predicate) {
    const auto guard = state_->core->reading();
    const PredicateTree& tree = state_->tree(kind, predicate.format());
    if (state_->hasDirty(kind) || state_->dependsOnPending(tree)) {
        return fetchObjects(kind, {.predicate = predicate}).size();
    }
    return readingLibrary([&] {
        const auto condition = PredicateSQL::compile(tree, predicate.arguments(), {});
        Statement& row = state_->reader().cached(
            "SELECT count(*) FROM " + Schema::library()[kind].table + " WHERE "
            + condition.condition);
        condition.bind(row);
        row.step();
        const auto count = static_cast<std::size_t>(row.integer(0));
        row.reset();
        return count;
    });
}

}  // namespace tesserine
