#include "app/tasks/UndoBar.h"

#include "app/look/HandKeysOn.h"
#include "app/look/IconButton.h"
#include "app/look/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>

#include <chrono>

namespace tesserine::app {
namespace {

constexpr std::chrono::seconds offered{12};
constexpr std::chrono::seconds again{1};

}  // namespace

UndoBar::UndoBar(QWidget* parent, QWidget& keyScope)
    : QFrame(parent),
      sentence_(new QLabel(this)),
      undo_(new QPushButton("Undo", this)),
      timer_(new QTimer(this)),
      key_(new QShortcut(QKeySequence::Undo, &keyScope)) {
    setObjectName("undoBar");
    sentence_->setObjectName("undoSentence");
    sentence_->setTextFormat(Qt::PlainText);
    sentence_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    undo_->setObjectName("undo");
    undo_->setFlat(true);
    auto* const close = new IconButton("close", "Dismiss", this);

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(space::medium, space::tiny, space::tiny, space::tiny);
    layout->addWidget(sentence_, 1);
    layout->addWidget(undo_);
    layout->addWidget(close);

    timer_->setSingleShot(true);
    connect(timer_, &QTimer::timeout, this, &UndoBar::go);
    connect(close, &IconButton::clicked, this, &QWidget::hide);
    connect(undo_, &QPushButton::clicked, this, &UndoBar::undo);
    undo_->setToolTip("Undo (" + key_->key().toString(QKeySequence::NativeText) + ")");
    key_->setContext(Qt::WidgetWithChildrenShortcut);
    connect(key_, &QShortcut::activated, this, &UndoBar::undo);
    hide();
}

void UndoBar::offer(const QString& sentence) {
    sentence.isEmpty() ? hide() : present(sentence, true);
}

void UndoBar::tell(const QString& sentence) { present(sentence, false); }

void UndoBar::present(const QString& sentence, bool canUndo) {
    sentence_->setText(sentence);
    undo_->setVisible(canUndo);
    show();
    timer_->start(offered);
}

/// What stands above takes its room: not under a mouse that is about to click there.
void UndoBar::go() { parentWidget()->underMouse() ? timer_->start(again) : hide(); }

void UndoBar::undo() {
    hide();
    timer_->stop();
    emit undone();
}

void UndoBar::hideEvent(QHideEvent* event) {
    QFrame::hideEvent(event);
    if (key_) handKeysOn(*this, *static_cast<QWidget*>(key_->parent()));
}

void UndoBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Theme::colors().line);
    painter.setBrush(Theme::colors().raised);
    painter.drawRoundedRect(
        QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}

}  // namespace tesserine::app
