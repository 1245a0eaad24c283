#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace tesserine {
class Calendar;
class Clock;
class StoreContext;
}  // namespace tesserine

namespace tesserine::app {

/// How many notes or open tasks each place holds, by its address. Places with none are left out.
using PlaceCounts = std::map<std::string, std::size_t>;

/// Counts everything that the sidebar lists. Takes longer in larger libraries: not for the main
/// thread.
PlaceCounts countPlaces(StoreContext& context, const Clock& clock, const Calendar& calendar);

}  // namespace tesserine::app
