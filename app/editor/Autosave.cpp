#include "app/editor/Autosave.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace tesserine::app {

Autosave::Autosave(std::function<bool()> save, QObject* parent)
    : QObject(parent), save_(std::move(save)) {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] { flush(); });
}

void Autosave::schedule() {
    isPending_ = true;
    if (!timer_.isActive()) timer_.start(interval_);
}

bool Autosave::flush() {
    timer_.stop();
    if (!isPending_) return true;
    isPending_ = false;
    QElapsedTimer elapsed;
    elapsed.start();
    const bool isSaved = save_();
    interval_ = std::max(delay, static_cast<int>(std::min<qint64>(20 * elapsed.elapsed(), 30'000)));
    // Not tried again by itself: the next change, or leaving the note, will.
    isPending_ = isPending_ || !isSaved;
    return isSaved;
}

void Autosave::cancel() {
    isPending_ = false;
    timer_.stop();
}

}  // namespace tesserine::app
