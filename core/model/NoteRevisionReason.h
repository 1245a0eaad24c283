#pragma once

#include <string_view>

namespace tesserine {

/// Why a revision of a note was kept.
enum class NoteRevisionReason {
    autosave,          ///< a periodic safety copy
    conflict,          ///< another writer's version, kept when two met
    preEdit,           ///< before a change of the body
    preImportReplace,  ///< before an import replaced the content
};

/// The text that is stored: "autosave", "conflict", "preEdit", "preImportReplace".
constexpr std::string_view rawValue(NoteRevisionReason reason) {
    switch (reason) {
    case NoteRevisionReason::autosave: return "autosave";
    case NoteRevisionReason::conflict: return "conflict";
    case NoteRevisionReason::preEdit: return "preEdit";
    case NoteRevisionReason::preImportReplace: return "preImportReplace";
    }
    return {};
}

}  // namespace tesserine
