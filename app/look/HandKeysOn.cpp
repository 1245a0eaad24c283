#include "app/look/HandKeysOn.h"

#include <QWidget>

namespace tesserine::app {

void handKeysOn(const QWidget& hidden, QWidget& next) {
    // Of its window: a dialog in front of it may have the keys at the moment.
    const QWidget* const chosen = hidden.window()->focusWidget();
    const bool hasKeys = chosen == &hidden || hidden.isAncestorOf(chosen);
    // All of a page may be hidden with it.
    if (hasKeys && next.isVisible()) next.setFocus();
}

}  // namespace tesserine::app
