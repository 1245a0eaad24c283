#pragma once

#include "ai/NoteAction.h"

#include <QString>

#include <span>
#include <string_view>

namespace tesserine::app {

/// An action on a note as the window names it.
struct ActionWords {
    NoteAction action;
    std::string_view command;  ///< its id in the table of commands
    const char* title;         ///< of the sheet
};

/// All actions, in their order.
std::span<const ActionWords> actionWords();
const ActionWords& wordsOf(NoteAction action);

}  // namespace tesserine::app
