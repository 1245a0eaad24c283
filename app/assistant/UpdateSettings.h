#pragma once

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// The page of settings for updates: whether the program looks for them, and a look now.
QWidget* makeUpdateSettings(AppEnvironment& environment, QWidget* parent);

}  // namespace tesserine::app
