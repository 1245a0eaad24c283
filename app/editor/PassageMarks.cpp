#include "app/editor/PassageMarks.h"

#include "app/look/Theme.h"

#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

/// UTF-16 units around what is seen; more than the line of which only a part is.
constexpr int margin = 500;

int positionAt(const BodyEdit& body, const QPoint& point) {
    return body.cursorForPosition(point).position();
}

}  // namespace

PassageMarks::PassageMarks(BodyEdit& body, BodyEdit::Overlay overlay)
    : body_(body), overlay_(overlay) {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &PassageMarks::markSeen);
    // Not at once: the note may just be being laid out, and asking for places would finish that.
    const auto follow = [this] {
        if (!passages_.empty()) timer_.start(0);
    };
    connect(body.verticalScrollBar(), &QScrollBar::valueChanged, this, follow);
    connect(body.verticalScrollBar(), &QScrollBar::rangeChanged, this, follow);
    connect(body.document(), &QTextDocument::contentsChange, this, [this] { passages_.clear(); });
}

void PassageMarks::show(std::vector<PassageRange> passages) {
    passages_ = std::move(passages);
    markSeen();
}

void PassageMarks::clear() { show({}); }

void PassageMarks::markSeen() {
    QList<QTextEdit::ExtraSelection> marks;
    if (!passages_.empty()) {
        const QRect seen = body_.viewport()->rect();
        const auto first =
            static_cast<std::size_t>(std::max(positionAt(body_, seen.topLeft()) - margin, 0));
        const auto last = static_cast<std::size_t>(positionAt(body_, seen.bottomRight()) + margin);
        QTextCharFormat look;
        look.setBackground(Theme::colors().highlight);
        look.setForeground(Theme::colors().text);  // the words may have a ground of their own
        auto passage = std::ranges::lower_bound(passages_, first, {}, &PassageRange::end);
        for (; passage != passages_.end() && passage->start <= last; ++passage) {
            QTextCursor place(body_.document());
            place.setPosition(static_cast<int>(passage->start));
            place.setPosition(static_cast<int>(passage->end()), QTextCursor::KeepAnchor);
            marks.append({place, look});
        }
    }
    body_.setOverlay(overlay_, marks);
}

}  // namespace tesserine::app
