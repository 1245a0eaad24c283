#pragma once

#include <string>
#include <string_view>

namespace tesserine {

/// The words that Evernote's recognition found in a picture, one line for each place in it: those
/// it was at least half sure of. `xml` is the text of a `recognition` element; none in it, or
/// something else, gives an empty text. Linear.
std::string recognisedText(std::string_view xml);

}  // namespace tesserine
