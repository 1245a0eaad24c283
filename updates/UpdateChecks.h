#pragma once

#include "base/Instant.h"
#include "updates/UpdateClient.h"
#include "updates/UpdateOffer.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace tesserine {

class Preferences;

/// Where this build looks for updates, and what it is.
struct UpdateSource {
    /// Without a service there is nowhere to look, and nothing touches the network.
    bool hasService = false;
    UpdateHosts hosts{};
    std::string feedURL{};
    std::string site{};  ///< for sentences
    std::filesystem::path program{};

    /// Of this build, whose program lies in `program`.
    static UpdateSource ofThisBuild(std::filesystem::path program);

    UpdateClient client(HTTPTransport& session) const;
    /// Whether a package manager owns the program: it lies where the system keeps such programs, or
    /// in a folder that its user cannot write. Updates are then no affair of ours.
    bool isOwnedByPackages() const;
};

/// When updates are looked for, and what the user decided about them.
namespace updates {

inline constexpr std::string_view automaticKey = "tesserine.updates.automatic";
inline constexpr std::string_view lastCheckKey = "tesserine.updates.lastCheck";
inline constexpr std::string_view skippedKey = "tesserine.updates.skipped";
/// Set while the last check said that this version is no longer supported.
inline constexpr std::string_view requiredKey = "tesserine.updates.required";
/// Between two checks that nobody asked for.
inline constexpr std::chrono::hours interval{24};

/// Whether the program looks by itself now: where it may, when the user did not forbid it and the
/// last time, if it makes sense, is longer ago than `interval`. A required update is looked for at
/// every start.
bool isDue(const Preferences& preferences, const UpdateSource& source, Instant now);
std::optional<Instant> lastCheck(const Preferences& preferences);
/// Remembers a check and what came of it. Throws `FileError`, as the next one does.
void noteCheck(Preferences& preferences, Instant now, const std::optional<UpdateOffer>& offer);
void skip(Preferences& preferences, const Release& release);

/// What this program is; its system is none that the feed's system versions speak of.
UpdateSituation situation(const Preferences& preferences);

}  // namespace updates

}  // namespace tesserine
