#include "app/account/SyncSettings.h"

#include "app/account/AccountSection.h"
#include "app/account/DevicesSection.h"
#include "app/account/RefusedItems.h"
#include "app/account/RowList.h"
#include "app/account/ServiceSection.h"
#include "app/account/SignInSection.h"
#include "app/account/StorageSection.h"
#include "app/account/TokensSection.h"
#include "app/look/PageParts.h"
#include "app/state/SyncControl.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tesserine::app {

SyncSettings::SyncSettings(AppEnvironment& environment, QWidget* parent)
    : SettingsForm(tr("Sync"), environment.preferences(), parent),
      environment_(environment),
      signIn_(new SignInSection(environment, this)),
      service_(new ServiceSection(environment, this)),
      account_(new AccountSection(environment, this)),
      refused_(new QWidget(this)),
      refusedRows_(new RowList(tr("Not taken by the service"), refused_)),
      storage_(new StorageSection(environment, this)),
      devices_(new DevicesSection(environment, this)),
      tokens_(new TokensSection(environment, this)) {
    auto* const refused = new QVBoxLayout(refused_);
    refused->setContentsMargins(0, space::small, 0, 0);
    refused->setSpacing(space::medium);
    refused->addWidget(makeText(tr("Not taken by the service"), TextRole::heading, refused_));
    refused->addWidget(refusedRows_);
    refused_->setObjectName("refused");
    refused_->setVisible(false);
    for (QWidget* section : std::initializer_list<QWidget*>{
             signIn_, service_, account_, refused_, storage_, devices_, tokens_}) {
        addWide(section);
    }
    connect(&environment.syncControl(), &SyncControl::changed, this, &SyncSettings::follow);
    follow();
}

void SyncSettings::follow() {
    const SyncState& state = environment_.syncControl().state();
    const bool isSignedIn = state.account.has_value() && state.phase != SyncState::Phase::signedOut;
    const std::string account = isSignedIn ? state.account->id : "";
    const bool isNew = isSignedIn && account != shownAccount_;
    shownAccount_ = account;
    signIn_->setVisible(!isSignedIn);
    service_->setVisible(!isSignedIn);
    for (QWidget* section :
         std::initializer_list<QWidget*>{account_, storage_, devices_, tokens_}) {
        section->setVisible(isSignedIn);
    }
    const bool isSynced = isSignedIn && isVisible() && state.lastSync != lastSync_;
    lastSync_ = state.lastSync;
    if (isNew || isSynced) storage_->refresh();
    if (isNew || (isSynced && devices_->hasFailed())) devices_->refresh();
    if (isNew || (isSynced && tokens_->hasFailed())) tokens_->refresh();
    if (state.phase != SyncState::Phase::syncing) showRefused();
}

/// Another program may have signed in since the window last looked.
void SyncSettings::showEvent(QShowEvent* event) {
    SettingsForm::showEvent(event);
    SyncControl& control = environment_.syncControl();
    if (control.state().phase == SyncState::Phase::signedOut) control.syncNow();
}

void SyncSettings::showRefused() {
    const auto items = std::make_shared<std::vector<RefusedItem>>();
    environment_.inBackground(
        [items](StoreContext& context, const std::stop_token&) { *items = refusedItems(context); },
        this,
        [this, items] {
            std::vector<RowList::Row> rows;
            for (const RefusedItem& item : *items) {
                rows.push_back(
                    {.title = QString::fromStdString(item.title),
                     .hint = QString::fromStdString(item.sentence)});
            }
            refused_->setVisible(!shownAccount_.empty() && !rows.empty());
            refusedRows_->setRows(rows);
        });
}

QWidget* makeSyncSettings(AppEnvironment& environment, QWidget* parent) {
    return new SyncSettings(environment, parent);
}

}  // namespace tesserine::app
