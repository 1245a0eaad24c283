#include "app/editor/Autosave.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace tesserine::app {

Autosave::Autosave(Save save, QObject* parent) : QObject(parent), save_(std::move(save)) {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] { this->save(Occasion::whileWriting); });
}

void Autosave::schedule() {
    isPending_ = true;
    if (!timer_.isActive()) timer_.start(interval_);
}

bool Autosave::flush() { return save(Occasion::now); }

bool Autosave::save(Occasion occasion) {
    timer_.stop();
    if (!isPending_) return true;
    isPending_ = false;
    QElapsedTimer elapsed;
    elapsed.start();
    const bool isSaved = save_(occasion);
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
