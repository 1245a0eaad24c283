#pragma once

#include <string>
#include <vector>

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

/// Something of the library that the service did not take.
struct RefusedItem {
    std::string title;
    std::string sentence;  ///< why
};

/// All that wait for a change, by title. Reads the library: not on the main thread.
std::vector<RefusedItem> refusedItems(StoreContext& context);

}  // namespace tesserine::app
