#pragma once

#include "cli/Command.h"

#include <string>

namespace tesserine::cli {

class Session;

/// Opens the note in the person's editor and saves what they made of it: as Markdown where that
/// holds the whole note, as HTML elsewhere, saying so. The library is closed while the editor runs;
/// a note that another writer changed meanwhile keeps that version as a revision. When the save
/// fails the edited file stays, and the error says where.
ExitStatus editNoteInEditor(Session& session, const std::string& name);

}  // namespace tesserine::cli
