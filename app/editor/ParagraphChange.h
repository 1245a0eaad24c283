#pragma once

#include "core/body/AttributedText.h"

namespace tesserine::app {

class NoteDocument;

/// Makes the document say what `text` says, by replacing the paragraphs between those that both
/// begin and end with, as one step to undo. It says something else where their containers differ,
/// and where nothing is left of a body that was not begun empty.
void changeInto(NoteDocument& document, const AttributedText& text);

}  // namespace tesserine::app
