#pragma once

#include "ai/NoteAction.h"

#include <string>
#include <string_view>

namespace tesserine {

/// What a model wrote, as the body of a note that the user takes it over into: paragraphs and
/// lists, every character of them text. No markup of the model's gets through: what looks like a
/// picture or a link stays letters. Action items become a checklist.
std::string answerBody(NoteAction action, std::string_view answer);

}  // namespace tesserine
