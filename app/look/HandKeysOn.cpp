#include "app/look/HandKeysOn.h"

#include <QApplication>
#include <QWidget>

namespace tesserine::app {

void handKeysOn(const QWidget& hidden, QWidget& next) {
    const QWidget* const chosen = QApplication::focusWidget();
    const bool hasKeys = chosen == &hidden || hidden.isAncestorOf(chosen);
    // All of a page may be hidden with it.
    if (hasKeys && next.isVisible()) next.setFocus();
}

}  // namespace tesserine::app
