#pragma once

#include <QString>

namespace tesserine::app {

/// The same words with a place to break in the middle of very long ones, such as addresses and
/// names of files, so that a text of several lines is no wider than its place.
QString withBreaks(const QString& words);

}  // namespace tesserine::app
