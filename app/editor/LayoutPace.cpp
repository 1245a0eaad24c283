#include "app/editor/LayoutPace.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

namespace tesserine::app {
namespace {

/// UTF-16 units that are laid out in a part of a frame.
constexpr int stretch = 4'000;

}  // namespace

LayoutPace::LayoutPace(QTextDocument& document, QObject* parent)
    : QObject(parent), document_(document) {
    connect(&timer_, &QTimer::timeout, this, &LayoutPace::step);
}

void LayoutPace::begin() {
    next_ = 0;
    timer_.start(0);
}

void LayoutPace::step() {
    const QTextBlock last = document_.lastBlock();
    QTextBlock block = document_.findBlock(next_);
    while (block.isValid() && block.layout()->lineCount() > 0) {
        block = block.next();
    }
    if (!block.isValid() || block == last) return timer_.stop();
    next_ = block.position();
    const QTextBlock end = document_.findBlock(next_ + stretch);
    // A change of nothing has all before it laid out, and the toolkit begin with small steps again.
    document_.markContentsDirty(end.isValid() ? end.position() : last.position(), 0);
}

}  // namespace tesserine::app
