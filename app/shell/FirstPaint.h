#pragma once

#include <functional>

class QWidget;

namespace tesserine::app {

/// Calls `work` once, right after `widget` was painted for the first time; never when it goes
/// before.
void afterFirstPaint(QWidget& widget, std::function<void()> work);

}  // namespace tesserine::app
