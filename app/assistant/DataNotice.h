#pragma once

#include <functional>

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// Says once, before the first request, what is sent where, and asks whether to go on. `agreed` is
/// called then, and at once when the user agreed before. Belongs to the window of `parent`; its
/// object name is "dataNotice".
void withDataNotice(AppEnvironment& environment, QWidget* parent, std::function<void()> agreed);

}  // namespace tesserine::app
