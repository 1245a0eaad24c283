#pragma once

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// The page of settings for the assistant: whether it is on, whom it asks, what it never sends, and
/// what was sent.
QWidget* makeAssistantSettings(AppEnvironment& environment, QWidget* parent);

}  // namespace tesserine::app
