#include "app/look/EmptyState.h"

#include "app/look/IconLabel.h"
#include "app/look/Theme.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr int pictureSide = 48;
constexpr int textWidth = 340;

QLabel* centredLabel(QWidget* parent, TextRole role) {
    auto* const label = new QLabel(parent);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setFont(Theme::font(role));
    return label;
}

}  // namespace

EmptyState::EmptyState(const Content& content, QWidget* parent)
    : QWidget(parent),
      picture_(new IconLabel(icon(content.icon, Ink::secondary), pictureSide, this)),
      title_(centredLabel(this, TextRole::heading)),
      text_(centredLabel(this, TextRole::body)),
      button_(new QPushButton(this)) {
    auto* const middle = new QWidget(this);  // gives the texts their width, and so their lines
    middle->setMaximumWidth(textWidth);
    auto* const column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addStretch(2);
    column->addWidget(picture_, 0, Qt::AlignHCenter);
    column->addSpacing(space::large);
    column->addWidget(title_);
    column->addSpacing(space::tiny);
    column->addWidget(text_);
    column->addSpacing(space::large);
    column->addWidget(button_, 0, Qt::AlignHCenter);
    column->addStretch(3);  // a little above the middle, where the eye rests
    auto* const row = new QHBoxLayout(this);
    row->addStretch(1);
    row->addWidget(middle, 1000);
    row->addStretch(1);
    connect(button_, &QPushButton::clicked, this, &EmptyState::acted);
    button_->setAutoDefault(true);  // so that Return presses it, as Space does
    setContent(content);
    followPalette();
}

void EmptyState::setContent(const Content& content) {
    picture_->setIcon(icon(content.icon, Ink::secondary));
    title_->setText(content.title);
    text_->setText(content.text);
    button_->setText(content.action);
    const bool hasAction = !content.action.isEmpty();
    button_->setVisible(hasAction);
    setFocusProxy(hasAction ? button_ : nullptr);
}

void EmptyState::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) followPalette();
    QWidget::changeEvent(event);
}

void EmptyState::followPalette() {
    QPalette palette = text_->palette();
    if (palette.color(QPalette::WindowText) == Theme::colors().secondaryText) return;
    palette.setColor(QPalette::WindowText, Theme::colors().secondaryText);
    text_->setPalette(palette);
}

}  // namespace tesserine::app
