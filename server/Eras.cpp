#include "server/Eras.h"

#include "base/Random.h"
#include "base/Uuid.h"

namespace tesserine::server {

void Eras::begin(ServerDatabase& database, Random& random) {
    database.transact([&](SQLiteDatabase& writer) {
        // An era in which nothing was changed makes room for this one.
        Statement& insert = writer.cached(
            "INSERT OR REPLACE INTO eras (user, start, name) SELECT id, seq, ? FROM users");
        insert.bindText(1, Uuid::random(random).wireText());
        insert.step();
    });
}

std::string Eras::nameAt(SQLiteDatabase& database, const std::string& user, std::int64_t seq) {
    Statement& select = database.cached(
        "SELECT name FROM eras WHERE user = ? AND start < ? ORDER BY start DESC LIMIT 1");
    select.bindText(1, user);
    select.bindInteger(2, seq);
    std::string name = select.step() ? select.text(0).value_or("") : "first";
    select.reset();
    return name;
}

}  // namespace tesserine::server
