#include "app/account/SignInSection.h"

#include "app/look/PageParts.h"
#include "app/state/SyncControl.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace tesserine::app {

SignInSection::SignInSection(AppEnvironment& environment, QWidget* parent)
    : Section({}, environment, parent),
      ended_(makeText({}, TextRole::body, this)),
      signIn_(makeMainButton(tr("Sign In…"), this)),
      pending_(new QWidget(this)) {
    column().addWidget(makeHint(
        tr("Sync keeps this library the same on all your computers: what you write here is there "
           "a moment later, and the other way round. Everything stays on this computer as well, "
           "and works without a connection."),
        this));
    setTone(*ended_, Tone::danger);
    ended_->setObjectName("sessionEnded");
    column().addWidget(ended_);
    signIn_->setObjectName("signIn");
    column().addWidget(signIn_, 0, Qt::AlignLeft);

    auto* const waiting = makeText(
        tr("Your browser shows the page to sign in with. It leads back here."),
        TextRole::body,
        pending_);
    QPushButton* const again = makeButton(tr("Open the Page Again"), "openAgain");
    QPushButton* const cancel = makeButton(tr("Cancel"), "cancelSignIn");
    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(space::small);
    buttons->addWidget(again);
    buttons->addWidget(cancel);
    buttons->addStretch(1);
    auto* const lines = new QVBoxLayout(pending_);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(space::medium);
    lines->addWidget(waiting);
    lines->addLayout(buttons);
    pending_->setObjectName("signInPending");
    column().addWidget(pending_);

    SyncControl& control = environment.syncControl();
    connect(signIn_, &QPushButton::clicked, this, &SignInSection::signIn);
    connect(again, &QPushButton::clicked, this, &SignInSection::signIn);
    connect(cancel, &QPushButton::clicked, &control, &SyncControl::cancelSignIn);
    connect(&control, &SyncControl::changed, this, &SignInSection::follow);
    connect(&control, &SyncControl::failed, this, &SignInSection::showFailure);
    follow();
}

void SignInSection::signIn() {
    showFailure({});
    const QString page = environment().syncControl().beginSignIn();
    if (QDesktopServices::openUrl(QUrl(page))) return;
    showFailure(tr("No browser could be opened. Open this address in one: %1").arg(page));
}

void SignInSection::follow() {
    SyncControl& control = environment().syncControl();
    const QString sentence = QString::fromStdString(control.state().sentence);
    if (control.state().account) showFailure({});
    ended_->setText(sentence);
    ended_->setVisible(!sentence.isEmpty() && !control.isSigningIn());
    signIn_->setVisible(!control.isSigningIn());
    signIn_->setEnabled(environment().sync() != nullptr);
    pending_->setVisible(control.isSigningIn());
}

}  // namespace tesserine::app
