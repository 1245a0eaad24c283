#include "updates/UpdateChecks.h"

#include "base/Preferences.h"
#include "base/Product.h"

#include <unistd.h>

#include <utility>

namespace tesserine {
namespace {

/// Where systems and the stores for them put programs.
bool isSystemPlace(const std::string& path) {
    for (const char* place : {"/usr/local/", "/opt/"}) {
        if (path.starts_with(place)) return false;
    }
    for (const char* place : {"/usr/", "/bin/", "/snap/", "/app/", "/nix/", "/gnu/"}) {
        if (path.starts_with(place)) return true;
    }
    return false;
}

}  // namespace

UpdateSource UpdateSource::ofThisBuild(std::filesystem::path program) {
    return {
        .hasService = product::hasService,
        .hosts = {.domain = std::string(product::domain)},
        .feedURL = std::string(product::updateFeedURL),
        .site = std::string(product::serviceBaseURL),
        .program = std::move(program)};
}

UpdateClient UpdateSource::client(HTTPTransport& session) const {
    return UpdateClient({.session = session, .hosts = hosts, .feedURL = feedURL, .site = site});
}

bool UpdateSource::isOwnedByPackages() const {
    return isSystemPlace(program.string()) || access(program.parent_path().c_str(), W_OK) != 0;
}

namespace updates {

bool isDue(const Preferences& preferences, const UpdateSource& source, Instant now) {
    if (!source.hasService || source.isOwnedByPackages()) return false;
    if (!preferences.boolean(automaticKey).value_or(true)) return false;
    if (preferences.boolean(requiredKey).value_or(false)) return true;
    const auto last = lastCheck(preferences);
    // A time in the future is of a clock that was wrong.
    return !last || *last > now || now - *last > interval;
}

std::optional<Instant> lastCheck(const Preferences& preferences) {
    return Instant::parseISO(preferences.string(lastCheckKey).value_or(""));
}

void noteCheck(Preferences& preferences, Instant now, const std::optional<UpdateOffer>& offer) {
    preferences.set(lastCheckKey, now.iso());
    if (offer && offer->isRequired) {
        preferences.set(requiredKey, true);
    } else if (preferences.boolean(requiredKey)) {
        preferences.remove(requiredKey);
    }
}

void skip(Preferences& preferences, const Release& release) {
    preferences.set(skippedKey, release.stamp.version.text);
}

UpdateSituation situation(const Preferences& preferences) {
    return {
        .current = {.version = *AppVersion::parse(product::version)},
        .skipped = preferences.string(skippedKey)};
}

}  // namespace updates

}  // namespace tesserine
