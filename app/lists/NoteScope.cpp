#include "app/lists/NoteScope.h"

#include "core/store/StoreContext.h"

#include <utility>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

bool hasTarget(Kind kind) { return kind == Kind::notebook || kind == Kind::tag; }

std::string predicateOf(Kind kind) {
    std::string live = "trashedAt == nil AND isTemplate == NO";
    switch (kind) {
    case Kind::pinned: return "isPinned == YES AND " + live;
    case Kind::reminders: return "reminderAt != nil AND " + live;
    case Kind::templates: return "isTemplate == YES AND trashedAt == nil";
    case Kind::notebook: return "notebook == %@ AND " + live;
    case Kind::tag: return "ANY tags == %@ AND " + live;
    case Kind::trash: return "trashedAt != nil";
    default: return live;
    }
}

}  // namespace

bool NoteScope::isListed(Kind kind) {
    switch (kind) {
    case Kind::allNotes:
    case Kind::pinned:
    case Kind::reminders:
    case Kind::templates:
    case Kind::notebook:
    case Kind::tag:
    case Kind::trash: return true;
    default: return false;
    }
}

NoteScope::NoteScope(Place place, NoteOrder order)
    : place_(std::move(place)), predicate_(predicateOf(place_.kind)) {
    if (place_.kind == Kind::pinned) {
        orderBy(&CDNote::favoritedAt, "favoritedAt");
    } else if (place_.kind == Kind::trash) {
        orderBy(&CDNote::trashedAt, "trashedAt");
    } else if (place_.kind == Kind::reminders) {
        orderBy(&CDNote::reminderAt, "reminderAt");
        isAscending_ = true;
    } else {
        if (order == NoteOrder::created) orderBy(&CDNote::createdAt, "createdAt");
        isByTitle_ = order == NoteOrder::title;
    }
}

void NoteScope::orderBy(Attribute<Instant> CDNote::*date, const char* name) {
    date_ = date;
    dateName_ = name;
}

std::optional<FetchRequest> NoteScope::request(StoreContext& context) const {
    using Order = SortDescriptor::Order;
    FetchRequest request{
        .predicate = {predicate_},
        .sort = {{dateName_, isAscending_ ? Order::ascending : Order::descending}}};
    // Found by their flag: along the dates of pinning every note would be walked past.
    if (place_.kind == Kind::pinned) request.sort.clear();
    if (!hasTarget(place_.kind)) return request;
    StoreObject* object = target(context);
    if (object == nullptr) return std::nullopt;
    request.predicate = {predicate_, object};
    return request;
}

std::optional<FetchRequest> NoteScope::requestFor(const Uuid& note, StoreContext& context) const {
    const std::string format = predicate_ + " AND id == %@";
    if (!hasTarget(place_.kind)) return FetchRequest{.predicate = {format, note}};
    StoreObject* object = target(context);
    if (object == nullptr) return std::nullopt;
    return FetchRequest{.predicate = {format, object, note}};
}

StoreObject* NoteScope::target(StoreContext& context) const {
    if (place_.kind == Kind::notebook) return context.find<CDNotebook>(place_.id);
    return context.find<CDTag>(place_.id);
}

}  // namespace tesserine::app
