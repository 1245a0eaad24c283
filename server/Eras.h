#pragma once

#include "server/ServerDatabase.h"

#include <cstdint>
#include <string>

namespace tesserine {
class Random;
}

namespace tesserine::server {

/// Tells histories of one account apart: a service that was put back to an older state counts its
/// next changes with numbers that were given before. An era begins with every start of the service
/// and has a name of its own, so a number that was given twice lies in two eras. Devices compare
/// the name of the era of the last change they know.
class Eras {
public:
    /// Begins a new one, for every account.
    static void begin(ServerDatabase& database, Random& random);
    /// The name of the era in which the change of that number was made.
    static std::string nameAt(SQLiteDatabase& database, const std::string& user, std::int64_t seq);
};

}  // namespace tesserine::server
