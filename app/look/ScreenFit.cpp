#include "app/look/ScreenFit.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QWidget>

namespace tesserine::app {
namespace {

constexpr QSize frame(8, 40);  // what a desktop puts around a window

bool isWindow(const QWidget& widget) {
    return widget.windowType() == Qt::Window || widget.windowType() == Qt::Dialog;
}

}  // namespace

ScreenFit::ScreenFit(QApplication& application) { application.installEventFilter(this); }

/// The event comes before the window is seen.
bool ScreenFit::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show && !event->spontaneous()) {
        auto* const widget = qobject_cast<QWidget*>(watched);
        if (widget != nullptr && isWindow(*widget)) {
            const QSize room = widget->screen()->availableSize() - frame;
            widget->resize(widget->size().boundedTo(room));
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace tesserine::app
