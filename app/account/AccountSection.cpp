#include "app/account/AccountSection.h"

#include "app/account/InfoRow.h"
#include "app/account/SyncWords.h"
#include "app/look/Separator.h"
#include "app/look/Theme.h"
#include "app/state/SyncControl.h"

#include <QHBoxLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace tesserine::app {

AccountSection::AccountSection(AppEnvironment& environment, QWidget* parent)
    : Section({}, environment, parent),
      account_(new InfoRow({}, {}, makeButton(tr("Sign Out…"), "signOut"), this)),
      state_(new InfoRow({}, {}, nullptr, this)),
      syncNow_(makeButton(tr("Sync Now"), "syncNow")),
      answer_(makeButton({}, "answer")) {
    account_->setObjectName("account");
    state_->setObjectName("syncState");
    column().addWidget(account_);
    column().addWidget(new Separator(Qt::Horizontal, this));
    auto* const row = new QHBoxLayout;
    row->setSpacing(space::huge);
    row->addWidget(state_, 1);
    row->addWidget(answer_, 0, Qt::AlignTop);
    row->addWidget(syncNow_, 0, Qt::AlignTop);
    column().addLayout(row);

    SyncControl& control = environment.syncControl();
    connect(
        account_->findChild<QPushButton*>("signOut"),
        &QPushButton::clicked,
        this,
        &AccountSection::askToSignOut);
    connect(syncNow_, &QPushButton::clicked, this, [&control] { control.syncNow(); });
    connect(answer_, &QPushButton::clicked, this, &AccountSection::answerQuestion);
    connect(&control, &SyncControl::changed, this, &AccountSection::follow);
    connect(&control, &SyncControl::failed, this, [this](const QString& sentence) {
        account_->setEnabled(true);
        showFailure(sentence);
    });
    follow();
}

void AccountSection::follow() {
    const SyncState& state = environment().syncControl().state();
    if (!state.account || environment().sync() == nullptr) {
        account_->setEnabled(true);
        return showFailure({});
    }
    const QString address = QString::fromStdString(environment().sync()->client().baseURL());
    account_->setTexts(QString::fromStdString(state.account->email), QUrl(address).host());
    const SyncWords words = SyncWords::of(state, environment().now(), environment().calendar());
    state_->setTexts(words.title, words.detail);

    const bool isAsking = state.question.has_value();
    answer_->setVisible(isAsking);
    syncNow_->setVisible(!isAsking);
    syncNow_->setEnabled(state.phase != SyncState::Phase::syncing);
    if (!isAsking) return;
    const bool isAboutDeletions = *state.question == SyncQuestion::Kind::manyDeletions;
    const QString verb = isAboutDeletions ? tr("Delete Them Here") : tr("Add the Notes");
    answer_->setText(verb);
    answer_->setAccessibleName(verb);
}

/// The other answer is to do nothing, or to sign out.
void AccountSection::answerQuestion() {
    SyncControl& control = environment().syncControl();
    const auto question = control.state().question;
    if (!question) return;
    control.syncNow(
        {.anotherAccount = *question == SyncQuestion::Kind::anotherAccount,
         .manyDeletions = *question == SyncQuestion::Kind::manyDeletions});
}

void AccountSection::askToSignOut() {
    auto* const box = new QMessageBox(
        QMessageBox::Question,
        tr("Sign Out"),
        tr("Sign this computer out? The notes stay here. What you change from now on is not "
           "synced until you sign in again."),
        QMessageBox::Cancel,
        this);
    box->setObjectName("question");
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(QMessageBox::Cancel);
    QPushButton* const signOut = box->addButton(tr("Sign Out"), QMessageBox::DestructiveRole);
    connect(signOut, &QPushButton::clicked, this, [this] {
        account_->setEnabled(false);
        environment().syncControl().signOut();
    });
    box->open();
}

}  // namespace tesserine::app
