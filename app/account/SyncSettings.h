#pragma once

#include "app/look/SettingsForm.h"
#include "base/Instant.h"

#include <optional>
#include <string>

namespace tesserine::app {

class AccountSection;
class AppEnvironment;
class DevicesSection;
class RowList;
class ServiceSection;
class SignInSection;
class StorageSection;
class TokensSection;

/// Settings of sync: the service and the way in while nobody is signed in; then the account, how
/// sync is doing, and what the account holds. Only what is shown is asked for.
class SyncSettings final : public SettingsForm {
    Q_OBJECT

public:
    explicit SyncSettings(AppEnvironment& environment, QWidget* parent = nullptr);

private:
    void showEvent(QShowEvent* event) override;

    void follow();
    void showRefused();

    AppEnvironment& environment_;
    SignInSection* const signIn_;
    ServiceSection* const service_;
    AccountSection* const account_;
    QWidget* const refused_;
    RowList* const refusedRows_;
    StorageSection* const storage_;
    DevicesSection* const devices_;
    TokensSection* const tokens_;
    // As it is shown.
    std::string shownAccount_;  // empty while nobody is signed in
    std::optional<Instant> lastSync_;
};

/// As the settings want it.
QWidget* makeSyncSettings(AppEnvironment& environment, QWidget* parent);

}  // namespace tesserine::app
