#pragma once

#include "base/Uuid.h"

#include <QString>

#include <functional>

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// Called with the path of a file once it is written.
using FileWritten = std::function<void(const QString& file)>;

/// Asks where to, and writes the note there as a page, as Markdown or as text, as the name of the
/// file says. A file of that name is replaced once the new one is whole. A failure is shown.
void exportNote(
    AppEnvironment& environment, const Uuid& note, QWidget* parent, FileWritten written);

/// The same with all open tasks that have a date, for calendar programs.
void exportTasks(AppEnvironment& environment, QWidget* parent, FileWritten written);

}  // namespace tesserine::app
