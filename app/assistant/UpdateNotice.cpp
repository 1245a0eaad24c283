#include "app/assistant/UpdateNotice.h"

#include "app/assistant/UpdateDialog.h"
#include "app/look/HandKeysOn.h"
#include "app/look/IconButton.h"
#include "app/look/PageParts.h"
#include "app/state/AppEnvironment.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <chrono>
#include <utility>

namespace tesserine::app {
namespace {

using namespace std::chrono_literals;

/// Long after the first paint, and never in the way of opening the library.
constexpr auto pauseAfterStart = 20s;
/// How often it is asked whether a day has passed.
constexpr auto interval = 1h;

}  // namespace

UpdateNotice::UpdateNotice(AppEnvironment& environment, QWidget* parent)
    : UpdateNotice(environment, updateSourceOfThisProgram(), downloadsFolder(), parent) {}

UpdateNotice::UpdateNotice(
    AppEnvironment& environment,
    UpdateSource source,
    std::filesystem::path downloads,
    QWidget* parent)
    : QFrame(parent),
      environment_(environment),
      downloads_(std::move(downloads)),
      work_(environment, std::move(source)) {
    setObjectName("updateNotice");
    build();
    connect(&work_, &UpdateWork::changed, this, &UpdateNotice::follow);
    connect(&timer_, &QTimer::timeout, this, &UpdateNotice::checkIfDue);
    timer_.start(interval);
    QTimer::singleShot(pauseAfterStart, this, &UpdateNotice::checkIfDue);
    hide();
}

void UpdateNotice::build() {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    text_ = makeText({}, TextRole::body, this);
    text_->setObjectName("updateText");
    details_ = new QPushButton("Details…", this);
    details_->setObjectName("updateDetails");
    details_->setAutoDefault(false);
    auto* const closing = new IconButton("close", "Hide this message", this);
    closing->setObjectName("updateLater");
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(space::large, space::small, space::small, space::small);
    row->setSpacing(space::small);
    row->addWidget(text_, 1);
    row->addWidget(details_);
    row->addWidget(closing);
    connect(details_, &QPushButton::clicked, this, &UpdateNotice::showDetails);
    connect(closing, &QToolButton::clicked, this, [this] {
        isPutOff_ = true;
        hide();
    });
}

void UpdateNotice::check() {
    wasAsked_ = true;
    isPutOff_ = false;
    work_.check();
    follow();
}

void UpdateNotice::checkIfDue() {
    const auto& source = work_.source();
    const bool isDue = updates::isDue(environment_.preferences(), source, environment_.now());
    if (!isDue || work_.isRunning() || work_.offer()) return;
    wasAsked_ = false;
    isPutOff_ = false;
    work_.check();
}

void UpdateNotice::follow() {
    const bool hasOffer = work_.offer().has_value();
    text_->setText(work_.sentence());
    setAccessibleName(text_->text());
    details_->setVisible(hasOffer);
    setVisible(!isPutOff_ && !text_->text().isEmpty() && (wasAsked_ || hasOffer));
}

void UpdateNotice::hideEvent(QHideEvent* event) {
    QFrame::hideEvent(event);
    handKeysOn(*this, *window());
}

void UpdateNotice::showDetails() { (new UpdateDialog(work_, downloads_, window()))->open(); }

}  // namespace tesserine::app
