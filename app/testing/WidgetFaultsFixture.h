#pragma once

#include <functional>
#include <initializer_list>
#include <string>

class QWidget;

namespace tesserine::test {

/// What a person could not read in a window that is shown: texts of labels and buttons that are
/// cut, and widgets that stand out of the one they are in. A line for each; empty is good.
std::string layoutFaults(const QWidget& window);

/// Controls that take keys and have no name for a person who hears the window. A line for each.
std::string namelessControls(const QWidget& window);

/// Calls `judge` with letters of each of `scales` times the usual size, for people who read from
/// left to right and for those who read from right to left. A failure names the two.
void forReaders(
    std::initializer_list<double> scales, const std::function<void(double scale)>& judge);

}  // namespace tesserine::test
