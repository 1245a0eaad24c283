#pragma once

#include <QString>

namespace tesserine {
struct SearchResponse;
}

namespace tesserine::app {

/// What was changed about a search for anything to be found, as rich text; empty when nothing was.
/// "Searching for <b>invoice</b>; search instead for <a href='exact'>invioce</a>."
QString changesOf(const SearchResponse& response);

}  // namespace tesserine::app
