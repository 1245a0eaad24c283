#pragma once

#include <future>

namespace tesserine::app {

/// What the first window would wait for, begun beside the making of it: the toolkit's list of the
/// fonts of this machine, and its connection to the session bus, where a menu bar looks for another
/// place to stand. Needs a QApplication, and goes before it does.
class HeadStart {
public:
    HeadStart();

private:
    std::future<void> fonts_;
    std::future<void> bus_;
};

}  // namespace tesserine::app
