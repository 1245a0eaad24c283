#include "app/shell/History.h"

namespace tesserine::app {

void History::visit(const Stop& stop) {
    if (stop == current()) return;
    stops_.resize(at_ + 1);
    stops_.push_back(stop);
    if (stops_.size() > mostStops) stops_.erase(stops_.begin());
    at_ = stops_.size() - 1;
}

}  // namespace tesserine::app
