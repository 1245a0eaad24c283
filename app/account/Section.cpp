#include "app/account/Section.h"

#include "app/look/PageParts.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

#include <utility>

namespace tesserine::app {

Section::Section(const QString& heading, AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      column_(new QVBoxLayout),
      failure_(makeHint({}, this)),
      job_(environment, Job::WhenLeft::goesOn) {
    auto* const all = new QVBoxLayout(this);
    all->setContentsMargins(0, heading.isEmpty() ? 0 : space::small, 0, 0);
    all->setSpacing(space::medium);
    if (!heading.isEmpty()) all->addWidget(makeText(heading, TextRole::heading, this));
    all->addLayout(column_);
    all->addWidget(failure_);
    column_->setSpacing(space::medium);
    setAccessibleName(heading);
    setTone(*failure_, Tone::danger);
    failure_->setObjectName("failure");
    showFailure({});
    connect(&job_, &Job::failed, this, [this](const QString& sentence) {
        showFailure(sentence);
        // Once it has its place; only for who is at work here, others keep what they look at.
        if (isAncestorOf(QApplication::focusWidget())) {
            QTimer::singleShot(0, this, &Section::bringFailureIntoView);
        }
        emit notAnswered();
        askNext();
    });
    connect(&job_, &Job::finished, this, &Section::askNext);
}

void Section::askNext() {
    if (const auto next = std::exchange(next_, {})) next();
}

void Section::bringFailureIntoView() {
    for (QWidget* around = parentWidget(); around != nullptr; around = around->parentWidget()) {
        auto* const area = qobject_cast<QScrollArea*>(around);
        if (area != nullptr) return area->ensureWidgetVisible(failure_, 0, space::medium);
    }
}

void Section::end(const std::function<void()>& request) {
    constexpr int notFound = 404;
    try {
        request();
    } catch (const SyncError& error) {
        if (error.problem().status != notFound) throw;
    }
}

QPushButton* Section::makeButton(const QString& title, const char* objectName) {
    auto* const button = new QPushButton(title, this);
    button->setObjectName(objectName);
    button->setAccessibleName(title);
    button->setAutoDefault(false);
    return button;
}

bool Section::hasFailed() const { return !failure_->isHidden(); }

void Section::showFailure(const QString& sentence) {
    failure_->setText(sentence);
    failure_->setVisible(!sentence.isEmpty());
}

}  // namespace tesserine::app
