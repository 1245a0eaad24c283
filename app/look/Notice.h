#pragma once

#include <string>

class QWidget;

namespace tesserine::app {

/// Shows one sentence with a button "OK" over the window of `parent`, and returns at once. Its
/// object name is "notice". What stands there already is not shown again.
void showNotice(QWidget* parent, const std::string& sentence);

}  // namespace tesserine::app
