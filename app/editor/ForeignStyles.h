#pragma once

#include "core/body/HTMLElements.h"

#include <string_view>
#include <vector>

namespace tesserine::app::paste {

/// The elements that say what an inline style says.
std::vector<HTMLElement> elementsOf(std::string_view style);
/// Whether a style takes back what the element would say.
bool isTakenBack(HTMLElement element, std::string_view style);

}  // namespace tesserine::app::paste
