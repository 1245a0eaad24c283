#include "cli/SyncAccess.h"

#include "base/Product.h"
#include "cli/Session.h"

#include <unistd.h>

#include <array>

namespace tesserine::cli {

std::unique_ptr<SyncService> syncService(Session& session) {
    const Environment& environment = session.environment();
    const std::string address = SyncService::address(
        session.preferences(), environment.variable(product::serviceURLVariable));
    // Waits and tokens follow the real clock, whatever --now says.
    return std::make_unique<SyncService>(
        address,
        SyncService::Environment{
            .session = environment.network(),
            .secrets = environment.secrets(SyncService::secretService(address)),
            .clock = environment.clock,
            .random = environment.random,
            .log = session.log()});
}

std::string deviceLabel() {
    std::array<char, 256> name{};
    const bool isNamed = gethostname(name.data(), name.size() - 1) == 0 && name.front() != '\0';
    return isNamed ? std::string(name.data()) : "Computer";
}

}  // namespace tesserine::cli
