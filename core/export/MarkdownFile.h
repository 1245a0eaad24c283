#pragma once

#include "base/Text.h"
#include "core/export/AddressMap.h"
#include "core/model/NoteEntities.h"

#include <string>

namespace tesserine {

/// A note as a Markdown file: front matter (title, id, dates, tags, notebook, …), its title as the
/// only heading of level 1, its body.
std::string markdownFileOf(
    const CDNote& note, const AddressMap& addressOf, const text::Collator& collator);

}  // namespace tesserine
