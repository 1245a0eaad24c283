#pragma once

#include "base/Text.h"
#include "core/export/AddressMap.h"
#include "core/model/NoteEntities.h"

#include <string>
#include <string_view>

namespace tesserine {

/// What stands before the body of a note in its Markdown file: front matter (title, id, dates,
/// tags, notebook, …) and its title, the only heading of level 1.
std::string markdownHeadOf(const CDNote& note, const text::Collator& collator);

/// The file of `head` and the stored body `html`. Any thread.
std::string markdownFileOf(
    const std::string& head, std::string_view html, const AddressMap& addressOf);

}  // namespace tesserine
