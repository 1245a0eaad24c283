#pragma once

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// The page of settings for writing: font, size, spelling, word count, shortcuts while typing. The
/// editor takes over what was changed as soon as it is seen again.
QWidget* makeEditorSettings(AppEnvironment& environment, QWidget* parent);

}  // namespace tesserine::app
