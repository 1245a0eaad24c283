#pragma once

#include <chrono>
#include <cstdint>

namespace tesserine::bench {

/// The same clock in every process of this machine.
std::int64_t nowInMicroseconds();

/// Prints a line with three numbers, and ends the application: the microseconds from `begun` until
/// a window was painted for the first time, the most private memory in the time of `settling`
/// after, and the private memory at its end, both in kilobytes. Needs a QApplication; call it
/// before a window is shown.
void reportFirstPaint(std::int64_t begun, std::chrono::milliseconds settling);

}  // namespace tesserine::bench
