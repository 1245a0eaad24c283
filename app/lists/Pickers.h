#pragma once

#include "app/lists/NoteActions.h"
#include "app/state/Place.h"
#include "base/Uuid.h"

#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// Lets the user choose a notebook by a few letters of its path; none: no notebook. `picked` is not
/// called when nothing is chosen. The pop-up belongs to `window`, as with the others.
void pickNotebook(
    AppEnvironment& environment,
    QWidget* window,
    std::function<void(const std::optional<Uuid>& notebook)> picked);

/// Lets the user choose what the notebook or tag `moved` is to stand below; none: nothing.
void pickParent(
    AppEnvironment& environment,
    QWidget* window,
    const Place& moved,
    std::function<void(const std::optional<Uuid>& parent)> picked);

/// Lets the user choose a tag, or type the name of a new one.
void pickTag(
    AppEnvironment& environment,
    QWidget* window,
    std::function<void(const NoteActions::ChosenTag& tag)> picked);

/// Lets the user choose a note template.
void pickTemplate(
    AppEnvironment& environment,
    QWidget* window,
    std::function<void(const Uuid& noteTemplate)> picked);

}  // namespace tesserine::app
