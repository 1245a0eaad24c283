#pragma once

#include "bench/Measure.h"

#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QTimer>

#include <algorithm>
#include <ctime>
#include <functional>
#include <iomanip>
#include <iostream>
#include <string>
#include <utility>

namespace tesserine::bench {

/// Seconds by the clock, and of them those that the calling thread had a processor.
struct Spent {
    double time = 0;
    double work = 0;
};

inline double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

template <class Work>
Spent spentIn(Work&& work) {
    const double before = threadSeconds();
    const double time = secondsOf(work);
    return {time, threadSeconds() - before};
}

inline Spent sum(const Spent& a, const Spent& b) { return {a.time + b.time, a.work + b.work}; }

inline Spent longer(const Spent& a, const Spent& b) {
    return {std::max(a.time, b.time), std::max(a.work, b.work)};
}

/// Remembers how long the longest event took, with all that it led to.
class WatchedApplication final : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        if (depth_ > 0) return QApplication::notify(receiver, event);
        bool isHandled = false;
        ++depth_;
        const Spent spent = spentIn([&] { isHandled = QApplication::notify(receiver, event); });
        --depth_;
        longest_ = longer(longest_, spent);
        return isHandled;
    }
    Spent takeLongest() { return std::exchange(longest_, {}); }

private:
    int depth_ = 0;
    Spent longest_;
};

/// Lets the event loop run, which sleeps while there is nothing to do.
inline void runFor(double seconds) {
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}

/// Until the condition holds, for at most a minute.
inline void runUntil(const std::function<bool()>& condition) {
    constexpr double longestWait = 60;  // seconds
    double waited = 0;
    while (!condition() && waited < longestWait) {
        waited += secondsOf([] { runFor(0.002); });
    }
}

inline void pressKey(QWidget& widget, int key, const QString& text) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &release);
}

inline void tell(const std::string& what, const Spent& spent) {
    std::cout << std::fixed << std::setprecision(1) << std::left << std::setw(44) << what
              << std::right << std::setw(8) << spent.time * 1000 << " ms" << std::setw(10)
              << spent.work * 1000 << " ms\n";
}

}  // namespace tesserine::bench
