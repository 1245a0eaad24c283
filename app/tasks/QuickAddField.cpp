#include "app/tasks/QuickAddField.h"

#include "app/look/Theme.h"
#include "app/tasks/QuickAddCompletion.h"

#include <QAbstractItemView>
#include <QAbstractTextDocumentLayout>
#include <QCompleter>
#include <QGlyphRun>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStringListModel>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

constexpr int mostNamesOffered = 8;
constexpr float tintOpacity = 0.14F;

QTextEdit::ExtraSelection painted(
    const QTextDocument& document, const QuickAddToken& token, const QTextCharFormat& format) {
    QTextEdit::ExtraSelection selection;
    selection.cursor =
        QTextCursor(const_cast<QTextDocument*>(&document));  // NOLINT: Qt's signature
    selection.cursor.setPosition(token.begin);
    selection.cursor.setPosition(token.end, QTextCursor::KeepAnchor);
    selection.format = format;
    return selection;
}

}  // namespace

QColor colorOf(TokenKind kind) {
    const Colors& colors = Theme::colors();
    switch (kind) {
    case TokenKind::date:
    case TokenKind::time: return colors.accent;
    case TokenKind::recurrence: return colors.success;
    case TokenKind::priority: return colors.danger;
    case TokenKind::project: return colors.priority[2];
    case TokenKind::label: return colors.warning;
    }
    return colors.text;
}

QuickAddField::QuickAddField(QuickAddModel& model, Moment moment, Names names, QWidget* parent)
    : QTextEdit(parent),
      model_(model),
      moment_(std::move(moment)),
      names_(std::move(names)),
      offered_(new QStringListModel(this)),
      completer_(new QCompleter(offered_, this)) {
    setObjectName("quickAddField");
    setAccessibleName("New task");
    setAccessibleDescription("A sentence such as “Send invoice tomorrow 9am #Work p1”");
    setFrameShape(QFrame::NoFrame);
    setAcceptRichText(false);
    setTabChangesFocus(true);
    setLineWrapMode(QTextEdit::NoWrap);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    document()->setDocumentMargin(space::tiny);
    document()->clearUndoRedoStacks();  // the margin would be a step
    viewport()->setAutoFillBackground(false);
    setMouseTracking(true);

    completer_->setWidget(this);
    completer_->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    connect(
        completer_,
        qOverload<const QString&>(&QCompleter::activated),
        this,
        &QuickAddField::takeName);
    connect(this, &QTextEdit::textChanged, this, &QuickAddField::takeText);
}

QSize QuickAddField::sizeHint() const {
    return {320, fontMetrics().height() + 2 * space::tiny + 2};
}

void QuickAddField::takeText() {
    if (isTakingText_) return;
    plainFrom_.reset();
    model_.setText(toPlainText(), moment_());
    if (toPlainText() != model_.text()) {
        isTakingText_ = true;
        setPlainText(model_.text());
        moveCursor(QTextCursor::End);
        isTakingText_ = false;
    }
    showTokens();
    offerNames();
}

void QuickAddField::takeAway() {
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    all.removeSelectedText();
}

void QuickAddField::readAgain() {
    model_.setText(toPlainText(), moment_());
    showTokens();
}

void QuickAddField::showTokens() {
    QList<ExtraSelection> selections;
    for (const QuickAddToken& token : model_.tokens()) {
        QTextCharFormat format;
        format.setForeground(colorOf(token.kind));
        selections += painted(*document(), token, format);
    }
    for (const QuickAddToken& token : model_.turnedBack()) {
        QTextCharFormat format;
        format.setUnderlineStyle(QTextCharFormat::DotLine);
        format.setUnderlineColor(Theme::colors().secondaryText);
        selections += painted(*document(), token, format);
    }
    setExtraSelections(selections);
    viewport()->update();
    emit sentenceChanged();
}

void QuickAddField::offerNames() {
    QAbstractItemView& popup = *completer_->popup();
    const auto name = nameBeingTyped(model_.text(), textCursor().position());
    const QStringList names =
        name ? namesLike(name->letters, names_(name->sign), mostNamesOffered) : QStringList();
    const bool isTypedWhole = names.size() == 1 && names.front() == name->letters;
    if (names.isEmpty() || isTypedWhole || !hasFocus()) {
        popup.hide();
        return;
    }
    offered_->setStringList(names);
    QRect place = cursorRect();
    place.setWidth(popup.sizeHintForColumn(0) + 2 * space::large);
    completer_->complete(place);
    // A name that only holds the letters is not the one being typed: Enter would write another.
    const bool isMeant = beginsWith(names.front(), name->letters);
    popup.setCurrentIndex(isMeant ? completer_->completionModel()->index(0, 0) : QModelIndex());
}

void QuickAddField::takeName(const QString& name) {
    QTextCursor cursor = textCursor();
    const auto typed = nameBeingTyped(model_.text(), cursor.position());
    if (!typed) return;
    cursor.setPosition(typed->begin, QTextCursor::KeepAnchor);
    cursor.insertText(nameInSentence(typed->sign, name) + ' ');
    setTextCursor(cursor);
}

bool QuickAddField::turnBackBy(const QKeyEvent& event) {
    if (event.matches(QKeySequence::Undo)) {
        const auto plain = std::exchange(plainFrom_, {});
        const bool isDone = plain ? model_.recogniseAgain(*plain) : model_.turnBackNewest();
        if (isDone) showTokens();
        return isDone;
    }
    const bool isBackspace =
        event.key() == Qt::Key_Backspace && event.modifiers() == Qt::NoModifier;
    if (!isBackspace || textCursor().hasSelection()) return false;
    const auto token = model_.tokenEndingAt(textCursor().position());
    if (!token) return false;
    model_.turnBack(*token);
    plainFrom_ = token->begin;
    showTokens();
    return true;
}

void QuickAddField::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    QAbstractItemView& popup = *completer_->popup();
    if (isEnter && !popup.currentIndex().isValid()) popup.hide();
    if (popup.isVisible()) {
        const bool isForPopup = isEnter || event->key() == Qt::Key_Escape
                                || event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab;
        if (isForPopup) {
            event->ignore();
            return;
        }
    }
    if (isEnter) {
        emit submitted();
    } else if (event->key() == Qt::Key_Escape) {
        emit escaped();
    } else if (event->key() == Qt::Key_Down) {
        emit leftDownwards();
    } else if (!turnBackBy(*event)) {
        QTextEdit::keyPressEvent(event);
    }
}

bool QuickAddField::toggleAt(int position) {
    plainFrom_.reset();
    if (const auto token = model_.tokenAt(position)) {
        model_.turnBack(*token);
    } else if (!model_.recogniseAgain(position)) {
        return false;
    }
    showTokens();
    return true;
}

void QuickAddField::mouseReleaseEvent(QMouseEvent* event) {
    QTextEdit::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton || textCursor().hasSelection()) return;
    const int position = document()->documentLayout()->hitTest(
        event->position() + QPointF(horizontalScrollBar()->value(), 0), Qt::ExactHit);
    if (position >= 0) toggleAt(position);
}

void QuickAddField::mouseMoveEvent(QMouseEvent* event) {
    QTextEdit::mouseMoveEvent(event);
    const int position = cursorForPosition(event->pos()).position();
    const bool isOnToken = model_.tokenAt(position).has_value();
    viewport()->setCursor(isOnToken ? Qt::PointingHandCursor : Qt::IBeamCursor);
    viewport()->setToolTip(isOnToken ? QStringLiteral("Click to keep this as text") : QString());
}

void QuickAddField::paintToken(QPainter& painter, const QuickAddToken& token) const {
    QRectF glyphs;
    const QTextLayout& layout = *document()->firstBlock().layout();
    for (const QGlyphRun& run : layout.glyphRuns(token.begin, token.end - token.begin)) {
        glyphs |= run.boundingRect();
    }
    const double scrolled = horizontalScrollBar()->value();
    const QRect line = cursorRect();
    const QRectF area(
        glyphs.left() + layout.position().x() - scrolled,
        line.top(),
        glyphs.width(),
        line.height());
    QColor tint = colorOf(token.kind);
    tint.setAlphaF(tintOpacity);
    painter.setBrush(tint);
    painter.drawRoundedRect(area.adjusted(-1.5, 0, 1.5, 0), space::tiny, space::tiny);
}

void QuickAddField::paintEvent(QPaintEvent* event) {
    {
        QPainter painter(viewport());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        for (const QuickAddToken& token : model_.tokens()) {
            paintToken(painter, token);
        }
    }
    QTextEdit::paintEvent(event);
}

void QuickAddField::insertFromMimeData(const QMimeData* source) {
    insertPlainText(source->text().simplified());
}

}  // namespace tesserine::app
