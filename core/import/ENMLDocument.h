#pragma once

#include "core/body/HTMLNode.h"

#include <string_view>

namespace tesserine {

/// Reads ENML, Evernote's markup, leniently: whatever stands in it, its text stays. Linear; depth
/// is bounded as for any body.
HTMLDocument parsedENML(std::string_view enml);

}  // namespace tesserine
