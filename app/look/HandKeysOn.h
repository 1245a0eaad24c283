#pragma once

class QWidget;

namespace tesserine::app {

/// Gives the keys to `next` when `hidden`, or what it holds, has those of its window. To be called
/// by its `hideEvent`: after that they would go to whatever comes next in the window, such as a
/// button.
void handKeysOn(const QWidget& hidden, QWidget& next);

}  // namespace tesserine::app
