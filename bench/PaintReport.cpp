#include "bench/PaintReport.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <string>

namespace tesserine::bench {
namespace {

constexpr auto lookInterval = std::chrono::milliseconds(50);  // at the memory

/// What only this process uses, in kilobytes.
std::int64_t privateMemory() {
    std::ifstream file("/proc/self/smaps_rollup");
    std::int64_t sum = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("Private_")) sum += std::stoll(line.substr(line.find(':') + 1));
    }
    return sum;
}

class PaintReport final : public QObject {
public:
    PaintReport(std::int64_t begun, std::chrono::milliseconds settling, QObject& application)
        : QObject(&application), begun_(begun), settling_(settling) {
        application.installEventFilter(this);
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType()) {
            parent()->removeEventFilter(this);
            // The event paints everything that the window shows.
            QTimer::singleShot(0, this, &PaintReport::beginLooking);
        }
        return false;
    }

    void beginLooking() {
        std::cout << nowInMicroseconds() - begun_ << std::flush;
        auto* const looks = new QTimer(this);
        connect(looks, &QTimer::timeout, this, [this] {
            mostMemory_ = std::max(mostMemory_, privateMemory());
        });
        looks->start(lookInterval);
        QTimer::singleShot(settling_, this, [this] {
            std::cout << ' ' << mostMemory_ << ' ' << privateMemory() << std::endl;
            QApplication::quit();
        });
    }

    std::int64_t begun_;
    std::chrono::milliseconds settling_;
    std::int64_t mostMemory_ = 0;
};

}  // namespace

std::int64_t nowInMicroseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

void reportFirstPaint(std::int64_t begun, std::chrono::milliseconds settling) {
    new PaintReport(begun, settling, *qApp);
}

}  // namespace tesserine::bench
