#include "app/pages/ChoiceCard.h"

#include "app/look/IconLabel.h"
#include "app/look/PageParts.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace tesserine::app {

ChoiceCard::ChoiceCard(
    const QString& icon, const QString& title, const QString& text, QWidget* parent)
    : QAbstractButton(parent) {
    setText(title);
    setAccessibleName(title);
    setAccessibleDescription(text);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);  // its text wraps, as others do
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);

    auto* const words = new QVBoxLayout;
    words->setSpacing(space::hair);
    words->addWidget(makeText(title, TextRole::emphasis, this));
    words->addWidget(makeHint(text, this));
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(space::large, space::medium, space::large, space::medium);
    row->setSpacing(space::large);
    row->addWidget(new IconLabel(app::icon(icon, Ink::accent), 28, this));
    row->addLayout(words, 1);
    row->addWidget(new IconLabel(app::icon("chevron-right", Ink::secondary), 16, this));
    for (QLabel* label : findChildren<QLabel*>()) {
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
}

void ChoiceCard::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn) return click();
    QAbstractButton::keyPressEvent(event);
}

void ChoiceCard::paintEvent(QPaintEvent*) {
    const Colors& colors = Theme::colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus() ? QPen(colors.accent, 1.5) : QPen(colors.line, 1));
    painter.setBrush(isDown() ? colors.selection : underMouse() ? colors.hover : colors.raised);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 8, 8);
}

}  // namespace tesserine::app
