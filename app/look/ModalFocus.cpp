#include "app/look/ModalFocus.h"

#include <QApplication>
#include <QEvent>
#include <QMetaObject>
#include <QWidget>

namespace tesserine::app {
namespace {

/// The outermost window that `widget` belongs to, or `end` where that is met on the way.
const QWidget* outermost(const QWidget* widget, const QWidget* end = nullptr) {
    while (widget != end && widget->parentWidget() != nullptr)
        widget = widget->parentWidget();
    return widget;
}

/// The dialog that has to be answered before `window` takes keys, or null.
QWidget* blockerOf(const QWidget& window) {
    QWidget* const modal = QApplication::activeModalWidget();
    if (modal == nullptr) return nullptr;
    const QWidget* const reached = outermost(&window, modal);
    if (reached == modal) return nullptr;
    const bool blocksAll = modal->windowModality() == Qt::ApplicationModal;
    return blocksAll || reached == outermost(modal) ? modal : nullptr;
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
