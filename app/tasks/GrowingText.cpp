#include "app/tasks/GrowingText.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QMimeData>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tesserine::app {
namespace {

constexpr std::chrono::seconds pause{1};

}  // namespace

GrowingText::GrowingText(Lines lines, int leastLines, int mostLines, QWidget* parent)
    : QPlainTextEdit(parent), lines_(lines), leastLines_(leastLines), mostLines_(mostLines) {
    setFrameShape(QFrame::NoFrame);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    document()->setDocumentMargin(2);
    document()->clearUndoRedoStacks();  // the margin would be a step
    auto* const timer = new QTimer(this);
    timer->setSingleShot(true);
    timer->setInterval(pause);
    connect(timer, &QTimer::timeout, this, &GrowingText::settle);
    connect(this, &QPlainTextEdit::textChanged, this, [this, timer] {
        fit();
        if (isEdited()) timer->start();
    });
}

void GrowingText::setShownText(const QString& text) {
    if (text != toPlainText()) setPlainText(text);
    document()->setModified(false);
    fit();
}

void GrowingText::settle() {
    if (isEdited()) emit settled();
}

int GrowingText::lineCount() const {
    // The height of a plain text document is counted in lines.
    return static_cast<int>(std::ceil(document()->size().height()));
}

void GrowingText::fit() {
    const bool isAll = lineCount() <= mostLines_;
    setVerticalScrollBarPolicy(isAll ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    updateGeometry();
}

QSize GrowingText::sizeHint() const {
    const int shown = std::clamp(lineCount(), leastLines_, mostLines_);
    const double margins = 2 * document()->documentMargin();
    return {240, static_cast<int>(std::ceil(shown * fontMetrics().lineSpacing() + margins)) + 4};
}

void GrowingText::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    if (event->oldSize().width() != event->size().width()) fit();
}

void GrowingText::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) fit();
}

void GrowingText::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter || lines_ == Lines::many) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    settle();
    emit entered();
}

void GrowingText::focusOutEvent(QFocusEvent* event) {
    QPlainTextEdit::focusOutEvent(event);
    settle();
}

void GrowingText::insertFromMimeData(const QMimeData* source) {
    insertPlainText(lines_ == Lines::one ? source->text().simplified() : source->text());
}

}  // namespace tesserine::app
