#include "app/state/SyncControl.h"

#include "app/state/AppEnvironment.h"
#include "base/Clock.h"
#include "sync/SyncService.h"

namespace tesserine::app {

SyncControl::SyncControl(AppEnvironment& environment)
    : environment_(environment), clock_(std::make_unique<SystemClock>()) {}

SyncControl::~SyncControl() = default;

SyncService* SyncControl::service() {
    if (!isLookedUp_) {
        isLookedUp_ = true;
        try {
            const std::string address =
                SyncService::address(environment_.preferences(), environment_.setting().serviceURL);
            services_.push_back(std::make_unique<SyncService>(
                address,
                SyncService::Environment{
                    .session = environment_.network(),
                    .secrets = environment_.secrets(SyncService::secretService(address)),
                    .clock = *clock_,
                    .random = environment_.random(),
                    .log = environment_.log()}));
        } catch (const SyncSetupError& error) {
            environment_.log().info(error.what());
            services_.push_back(nullptr);
        }
    }
    return services_.back().get();
}

void SyncControl::setAddress(const std::optional<std::string>& address) {
    Preferences& preferences = environment_.preferences();
    if (address) {
        preferences.set(SyncService::addressKey, SyncService::checked(*address));
    } else {
        preferences.remove(SyncService::addressKey);
    }
    isLookedUp_ = false;
}

}  // namespace tesserine::app
