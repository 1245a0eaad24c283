#include "app/editor/NoticeBar.h"

#include "app/look/HandKeysOn.h"
#include "app/look/IconButton.h"
#include "app/look/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace tesserine::app {

NoticeBar::NoticeBar(QWidget* parent)
    : QFrame(parent),
      label_(new QLabel(this)),
      buttons_(new QHBoxLayout),
      timer_(new QTimer(this)) {
    setObjectName("noticeBar");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    label_->setWordWrap(true);
    label_->setTextFormat(Qt::PlainText);
    auto* const closing = new IconButton("close", "Hide this message", this);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(space::huge, space::small, space::small, space::small);
    row->setSpacing(space::small);
    row->addWidget(label_, 1);
    row->addLayout(buttons_);
    row->addWidget(closing);
    connect(closing, &QToolButton::clicked, this, &QWidget::hide);
    timer_->setSingleShot(true);
    connect(timer_, &QTimer::timeout, this, &QWidget::hide);
    hide();
}

void NoticeBar::tell(const QString& text, const std::vector<Action>& actions, Lasting lasting) {
    leaveKeys();  // the button may go
    while (QLayoutItem* const item = buttons_->takeAt(0)) {
        if (item->widget() != nullptr) item->widget()->deleteLater();
        delete item;
    }
    for (const Action& action : actions) {
        auto* const button = new QPushButton(action.title, this);
        connect(button, &QPushButton::clicked, this, action.act);
        buttons_->addWidget(button);
    }
    label_->setText(text);
    setAccessibleName(text);
    timer_->stop();
    if (lasting == Lasting::moment) timer_->start(8'000);
    show();
}

void NoticeBar::hideEvent(QHideEvent* event) {
    QFrame::hideEvent(event);
    leaveKeys();
}

void NoticeBar::leaveKeys() {
    handKeysOn(*this, focusProxy() != nullptr ? *focusProxy() : *window());
}

QString NoticeBar::text() const { return isHidden() ? QString() : label_->text(); }

}  // namespace tesserine::app
