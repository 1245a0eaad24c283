#include "app/tasks/UndoBar.h"

#include "app/look/HandKeysOn.h"
#include "app/look/IconButton.h"
#include "app/look/Theme.h"
#include "app/tasks/QuickAddField.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTextDocument>
#include <QTextEdit>
#include <QTimer>

#include <chrono>

namespace tesserine::app {
namespace {

constexpr std::chrono::seconds offered{12};
constexpr std::chrono::seconds again{1};

}  // namespace

bool turnsItself(const QWidget& field, QKeySequence::StandardKey key) {
    const bool isUndo = key == QKeySequence::Undo;
    const auto turns = [isUndo](const auto& words) {
        return isUndo ? words.isUndoAvailable() : words.isRedoAvailable();
    };
    if (const auto* line = qobject_cast<const QLineEdit*>(&field)) return turns(*line);
    if (const auto* text = qobject_cast<const QPlainTextEdit*>(&field)) {
        return turns(*text->document());
    }
    const auto* const text = qobject_cast<const QTextEdit*>(&field);
    if (text == nullptr) return false;
    const bool isSentence = qobject_cast<const QuickAddField*>(text) != nullptr;
    return turns(*text->document()) || (isSentence && !text->document()->isEmpty());
}

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
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* /*before*/, QWidget* now) {
        const auto* const scope = key_ ? static_cast<QWidget*>(key_->parent()) : nullptr;
        if (now != nullptr && scope != nullptr && scope->isAncestorOf(now)) {
            now->installEventFilter(this);
        }
    });
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

/// A field would take the keys for itself also where they do nothing there.
bool UndoBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride || !watched->isWidgetType()) return false;
    const auto& keys = *static_cast<QKeyEvent*>(event);
    for (const auto key : {QKeySequence::Undo, QKeySequence::Redo}) {
        if (!keys.matches(key)) continue;
        event->ignore();
        return !turnsItself(*static_cast<QWidget*>(watched), key);
    }
    return false;
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
