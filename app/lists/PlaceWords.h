#pragma once

#include "app/look/EmptyState.h"
#include "app/state/Place.h"

#include <QString>

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

/// How a place is called: "All Notes", or the name of its notebook. Empty when it is gone.
QString titleOf(const Place& place, StoreContext& context);
/// Its icon in the window's set.
QString iconOf(Place::Kind kind);
/// What a list shows in a place that holds no notes.
EmptyState::Content emptyContentOf(Place::Kind kind);

}  // namespace tesserine::app
