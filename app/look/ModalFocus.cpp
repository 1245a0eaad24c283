#include "app/look/ModalFocus.h"

#include <QApplication>
#include <QEvent>
#include <QMetaObject>
#include <QWidget>

namespace tesserine::app {
namespace {

const QWidget& root(const QWidget& widget) {
    const QWidget* found = &widget;
    while (found->parentWidget() != nullptr)
        found = found->parentWidget();
    return *found;
}

/// The dialog that has to be answered before `window` takes keys, or null.
QWidget* blockerOf(const QWidget& window) {
    QWidget* const modal = QApplication::activeModalWidget();
    if (modal == nullptr || modal == &window || modal->isAncestorOf(&window)) return nullptr;
    const bool blocksAll = modal->windowModality() == Qt::ApplicationModal;
    return blocksAll || &root(*modal) == &root(window) ? modal : nullptr;
}

}  // namespace

ModalFocus::ModalFocus(QApplication& application) { application.installEventFilter(this); }

bool ModalFocus::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::WindowActivate && watched->isWidgetType()) {
        const auto& widget = static_cast<const QWidget&>(*watched);
        QWidget* const blocker = widget.isWindow() ? blockerOf(widget) : nullptr;
        if (blocker != nullptr) {
            QMetaObject::invokeMethod(
                blocker, [blocker] { blocker->activateWindow(); }, Qt::QueuedConnection);
        }
    }
    const QWidget* const active = QApplication::activeWindow();
    const bool isRefused =
        event->type() == QEvent::Shortcut && active != nullptr && blockerOf(*active) != nullptr;
    return isRefused || QObject::eventFilter(watched, event);
}

}  // namespace tesserine::app
