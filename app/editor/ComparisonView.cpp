#include "app/editor/ComparisonView.h"

#include "app/editor/BodyEdit.h"
#include "app/editor/Comparison.h"
#include "app/look/Theme.h"
#include "core/body/AttributedTextReader.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTextCursor>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

BodyEdit* bodyOf(const ComparisonView::Side& side, const AttributedText& text, Pictures& pictures) {
    auto* const body = new BodyEdit(pictures);
    body->setReadOnly(true);
    body->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    body->setAccessibleName(side.heading);
    body->setPlaceholderText({});
    body->note().setContent(text);
    body->setTextCursor(QTextCursor(&body->note()));
    return body;
}

QVBoxLayout* columnFor(const ComparisonView::Side& side, BodyEdit* body) {
    auto* const heading = new QLabel(side.heading);
    heading->setFont(Theme::font(TextRole::caption));
    heading->setForegroundRole(QPalette::PlaceholderText);
    auto* const title = new QLabel(side.title);
    title->setFont(Theme::font(TextRole::heading));
    title->setWordWrap(true);
    title->setTextFormat(Qt::PlainText);
    auto* const column = new QVBoxLayout;
    column->setSpacing(space::tiny);
    column->addWidget(heading);
    column->addWidget(title);
    column->addWidget(body, 1);
    return column;
}

void mark(BodyEdit& body, const std::vector<PassageRange>& ranges, const QColor& ground) {
    QList<QTextEdit::ExtraSelection> marks;
    for (const PassageRange& range : ranges) {
        QTextEdit::ExtraSelection place;
        place.cursor = QTextCursor(&body.note());
        place.cursor.setPosition(static_cast<int>(range.start));
        const int end = std::min(static_cast<int>(range.end()), body.note().characterCount() - 1);
        place.cursor.setPosition(end, QTextCursor::KeepAnchor);
        place.format.setBackground(ground);
        place.format.setForeground(Theme::colors().text);
        marks.append(place);
    }
    body.setOverlay(BodyEdit::Overlay::found, marks);
}

/// A colour laid thinly on the ground of a note.
QColor tinted(const QColor& color) {
    const QColor ground = Theme::colors().surface;
    constexpr double share = 0.24;
    return QColor::fromRgbF(
        static_cast<float>(color.redF() * share + ground.redF() * (1 - share)),
        static_cast<float>(color.greenF() * share + ground.greenF() * (1 - share)),
        static_cast<float>(color.blueF() * share + ground.blueF() * (1 - share)));
}

}  // namespace

ComparisonView::ComparisonView(
    const Side& left, const Side& right, Pictures& pictures, QWidget* parent)
    : QDialog(parent), buttons_(new QHBoxLayout) {
    setObjectName("comparison");
    setWindowTitle("Compare versions");
    const AttributedText leftText = attributedText(left.html);
    const AttributedText rightText = attributedText(right.html);
    const Comparison comparison = compared(leftText.text, rightText.text);
    auto* const first = bodyOf(left, leftText, pictures);
    auto* const second = bodyOf(right, rightText, pictures);
    first->setObjectName("leftVersion");
    second->setObjectName("rightVersion");
    mark(*first, comparison.removed, tinted(Theme::colors().danger));
    mark(*second, comparison.added, tinted(Theme::colors().success));
    connect(
        first->verticalScrollBar(),
        &QScrollBar::valueChanged,
        second->verticalScrollBar(),
        &QScrollBar::setValue);

    auto* const sides = new QHBoxLayout;
    sides->setSpacing(space::large);
    sides->addLayout(columnFor(left, first), 1);
    sides->addLayout(columnFor(right, second), 1);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(space::large, space::large, space::large, space::large);
    column->setSpacing(space::large);
    column->addLayout(sides, 1);
    column->addLayout(buttons_);
    addSummary(
        left.html == right.html ? "Both versions are the same."
        : comparison.areEqual() ? "The words are the same; what differs is how they look."
                                : "What differs is marked.");
    resize(980, 640);
}

/// Below the versions, with the button that changes nothing.
void ComparisonView::addSummary(const QString& summary) {
    auto* const label = new QLabel(summary, this);
    label->setObjectName("summary");
    label->setForegroundRole(QPalette::PlaceholderText);
    auto* const closing = new QPushButton("Close", this);
    closing->setDefault(true);
    connect(closing, &QPushButton::clicked, this, &QDialog::reject);
    buttons_->addWidget(label, 1);
    buttons_->addWidget(closing);
}

void ComparisonView::addChoice(const QString& title, int result) {
    auto* const button = new QPushButton(title, this);
    connect(button, &QPushButton::clicked, this, [this, result] { done(result); });
    buttons_->addWidget(button);
}

}  // namespace tesserine::app
