#include "server/Shares.h"

#include "server/Accounts.h"

namespace tesserine::server {

void Shares::begin(const std::string& user, const Uuid& note, const ShareLink& link) {
    database_.transact([&](SQLiteDatabase& database) {
        Statement& store = database.cached(
            "INSERT OR REPLACE INTO shares (user, note, id, digest, created) VALUES (?, ?, ?, ?, ?)");
        store.bindText(1, user);
        store.bindText(2, note.wireText());
        store.bindText(3, link.id);
        store.bindText(4, Accounts::digestOf(link.token));
        store.bindDouble(5, link.createdAt.seconds());
        store.step();
    });
}

void Shares::end(const std::string& user, const Uuid& note) {
    database_.transact([&](SQLiteDatabase& database) {
        Statement& remove = database.cached("DELETE FROM shares WHERE user = ? AND note = ?");
        remove.bindText(1, user);
        remove.bindText(2, note.wireText());
        remove.step();
    });
}

ShareStatus Shares::status(const std::string& user, const Uuid& note) {
    return database_.read([&](SQLiteDatabase& database) {
        Statement& find = database.cached("SELECT created FROM shares WHERE user = ? AND note = ?");
        find.bindText(1, user);
        find.bindText(2, note.wireText());
        ShareStatus status{.shared = find.step()};
        if (status.shared) status.createdAt = Instant::fromSeconds(find.real(0));
        find.reset();
        return status;
    });
}

std::optional<Shares::Note> Shares::noteOf(const std::string& token) {
    return database_.read([&](SQLiteDatabase& database) {
        Statement& find = database.cached("SELECT user, note FROM shares WHERE digest = ?");
        find.bindText(1, Accounts::digestOf(token));
        std::optional<Note> found;
        if (find.step()) {
            const auto id = Uuid::parse(find.text(1).value_or(""));
            if (id) found = Note{find.text(0).value_or(""), *id};
        }
        find.reset();
        return found;
    });
}

}  // namespace tesserine::server
