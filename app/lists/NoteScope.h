#pragma once

#include "app/state/Place.h"
#include "base/Instant.h"
#include "core/model/NoteEntities.h"
#include "core/store/Predicate.h"

#include <optional>
#include <string>

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

/// In which order a list shows its notes. Places with an order of their own ignore it.
enum class NoteOrder { updated, created, title };

/// Which notes a place shows, and in which order. A value; used with any context.
class NoteScope {
public:
    explicit NoteScope(Place place = {}, NoteOrder order = NoteOrder::updated);

    /// Whether places of this kind list notes.
    static bool isListed(Place::Kind kind);

    const Place& place() const { return place_; }
    /// What the list is ordered by, and shows as the note's date.
    Attribute<Instant> CDNote::*date() const { return date_; }
    bool isAscending() const { return isAscending_; }
    /// Titles decide, as a reader expects; `request` leaves that to who reads it.
    bool isByTitle() const { return isByTitle_; }
    /// Whether the first notes can be found without looking at all of them.
    bool hasBeginning() const { return !isByTitle_ && place_.kind != Place::Kind::pinned; }

    /// Everything in it, in the order of the dates, without one for pinned notes, which are few.
    /// None when the place is gone.
    std::optional<FetchRequest> request(StoreContext& context) const;
    /// The same for one note: it or nothing.
    std::optional<FetchRequest> requestFor(const Uuid& note, StoreContext& context) const;

private:
    void orderBy(Attribute<Instant> CDNote::*date, const char* name);
    StoreObject* target(StoreContext& context) const;

    Place place_;
    std::string predicate_;
    Attribute<Instant> CDNote::*date_ = &CDNote::updatedAt;
    std::string dateName_ = "updatedAt";
    bool isAscending_ = false;
    bool isByTitle_ = false;
};

}  // namespace tesserine::app
