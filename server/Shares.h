#pragma once

#include "base/Clock.h"
#include "server/ServerDatabase.h"
#include "sync/WireRecords.h"

#include <optional>
#include <string>

namespace tesserine::server {

/// Which notes can be read by whoever has a link. Of the secret parts of links only digests are
/// kept. Safe from any thread.
class Shares {
public:
    explicit Shares(ServerDatabase& database) : database_(database) {}

    /// Another link to the same note ends the one before.
    void begin(const std::string& user, const Uuid& note, const ShareLink& link);
    void end(const std::string& user, const Uuid& note);
    ShareStatus status(const std::string& user, const Uuid& note);

    struct Note {
        std::string user;
        Uuid id;
    };
    /// The note that a link shows.
    std::optional<Note> noteOf(const std::string& token);

private:
    ServerDatabase& database_;
};

}  // namespace tesserine::server
