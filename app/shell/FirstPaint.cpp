#include "app/shell/FirstPaint.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>

#include <utility>

namespace tesserine::app {
namespace {

class PaintWatch final : public QObject {
public:
    PaintWatch(QWidget& widget, std::function<void()> work)
        : QObject(&widget), work_(std::move(work)) {
        widget.installEventFilter(this);
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, this, [this] {
                work_();
                deleteLater();
            });
        }
        return QObject::eventFilter(watched, event);
    }

    std::function<void()> work_;
};

}  // namespace

void afterFirstPaint(QWidget& widget, std::function<void()> work) {
    new PaintWatch(widget, std::move(work));
}

}  // namespace tesserine::app
