#pragma once

#include "core/body/AttributedText.h"

namespace tesserine::app {

class NoteDocument;

/// Makes the document say what `text` says, by replacing the paragraphs between those that both
/// begin and end with, as one step to undo. The containers of both are the same, and both have a
/// paragraph; the document says something else otherwise.
void changeInto(NoteDocument& document, const AttributedText& text);

}  // namespace tesserine::app
