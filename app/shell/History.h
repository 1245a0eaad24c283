#pragma once

#include "app/state/Place.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace tesserine::app {

/// What has the keys in a place, so that what is typed goes there.
enum class KeyHolder { unknown, searchField, list, note };

/// Where a tab is: a place, and the note that is open in it.
struct Stop {
    Place place{};
    std::optional<Uuid> note{};
    KeyHolder keys = KeyHolder::unknown;  ///< no part of what makes two stops the same

    friend bool operator==(const Stop& one, const Stop& other) {
        return one.place == other.place && one.note == other.note;
    }
};

/// Where a tab was before and after, for Back and Forward.
class History {
public:
    static constexpr std::size_t mostStops = 100;

    explicit History(Stop first) : stops_{std::move(first)} {}

    const Stop& current() const { return stops_[at_]; }
    /// Goes on from here; what was ahead is forgotten. The same stop again changes nothing.
    void visit(const Stop& stop);
    /// Another note of the same list where the one before was only passed: not a step of its own.
    void replaceNote(const std::optional<Uuid>& note) { stops_[at_].note = note; }
    void keepKeys(KeyHolder keys) { stops_[at_].keys = keys; }
    void replace(const Stop& stop) { stops_[at_] = stop; }
    /// The same place by another name, such as a query while it is typed.
    void replacePlace(const Place& place) { stops_[at_].place = place; }

    bool canGoBack() const { return at_ > 0; }
    bool canGoForward() const { return at_ + 1 < stops_.size(); }
    /// These must be possible.
    const Stop& goBack() { return stops_[--at_]; }
    const Stop& goForward() { return stops_[++at_]; }

private:
    std::vector<Stop> stops_;
    std::size_t at_ = 0;
};

}  // namespace tesserine::app
