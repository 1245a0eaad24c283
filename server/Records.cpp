#include "server/Records.h"

#include "base/JSON.h"
#include "server/Eras.h"
#include "sync/WireCoding.h"
#include "sync/WireDate.h"

#include <algorithm>

namespace tesserine::server {
namespace {

constexpr const char* columns = "id, kind, rev, seq, deleted, payload, updated";

JSONObject payloadIn(const std::string& text) {
    const JSONValue payload = JSONValue::decode(text);
    return payload.object() == nullptr ? JSONObject() : *payload.object();
}

SyncRecord recordIn(const Statement& row) {
    return {
        .id = Uuid::parse(row.text(0).value_or("")).value_or(Uuid()),
        .kind = row.text(1).value_or(""),
        .rev = row.integer(2),
        .seq = row.integer(3),
        .deleted = row.integer(4) != 0,
        .payload = payloadIn(row.text(5).value_or("{}")),
        .updatedAt = wire::parseDate(row.text(6).value_or("")).value_or(Instant())};
}

std::optional<std::string> fileOf(const SyncPush& push) {
    const auto found = push.payload.find("sha256");
    const bool hasFile = push.kind == "attachment" && !push.deleted && found != push.payload.end()
                         && found->second.string() != nullptr;
    return hasFile ? std::optional(*found->second.string()) : std::nullopt;
}

std::int64_t headOf(SQLiteDatabase& database, const std::string& user) {
    Statement& select = database.cached("SELECT seq FROM users WHERE id = ?");
    select.bindText(1, user);
    const std::int64_t head = select.step() ? select.integer(0) : 0;
    select.reset();
    return head;
}

std::int64_t nextSeq(SQLiteDatabase& database, const std::string& user) {
    Statement& raise = database.cached("UPDATE users SET seq = seq + 1 WHERE id = ?");
    raise.bindText(1, user);
    raise.step();
    return headOf(database, user);
}

PushResult refusal(
    const SyncPush& push, const char* reason, std::int64_t limit, std::int64_t measured) {
    return {
        .id = push.id, .status = "refused", .reason = reason, .limit = limit, .measured = measured};
}

}  // namespace

ChangesResponse Records::changes(const std::string& user, std::int64_t since, std::int64_t limit) {
    constexpr std::int64_t mostAtOnce = 1'000;
    constexpr std::size_t bytesAtOnce = std::size_t{8} << 20;
    return database_.read([&](SQLiteDatabase& database) {
        ChangesResponse page{.changes = {}, .seq = since, .head = headOf(database, user)};
        Statement& select = database.cached(
            std::string("SELECT ") + columns
            + " FROM records WHERE user = ? AND seq > ? ORDER BY seq LIMIT ?");
        const std::int64_t count = std::clamp<std::int64_t>(limit, 1, mostAtOnce);
        select.bindText(1, user);
        select.bindInteger(2, since);
        select.bindInteger(3, count + 1);
        std::size_t bytes = 0;
        while (select.step()) {
            const bool isFull = page.changes.size() == static_cast<std::size_t>(count)
                                || (bytes > bytesAtOnce && !page.changes.empty());
            if (isFull) {
                page.more = true;
                break;
            }
            bytes += select.textView(5).size();
            page.changes.push_back(recordIn(select));
        }
        select.reset();
        if (!page.changes.empty()) page.seq = page.changes.back().seq;
        // A client that has seen more than there is must be told so.
        if (page.changes.empty()) page.seq = std::min(since, page.head);
        page.sinceMark = Eras::nameAt(database, user, since);
        page.seqMark = Eras::nameAt(database, user, page.seq);
        return page;
    });
}

PushResponse Records::push(
    const std::string& user,
    const std::vector<SyncPush>& changes,
    const std::function<bool(const std::string& digest)>& hasFile) {
    return database_.transact([&](SQLiteDatabase& database) {
        PushResponse response;
        for (const SyncPush& change : changes) {
            response.results.push_back(settle(database, user, change, hasFile));
        }
        response.head = headOf(database, user);
        return response;
    });
}

PushResult Records::settle(
    SQLiteDatabase& database,
    const std::string& user,
    const SyncPush& push,
    const std::function<bool(const std::string& digest)>& hasFile) {
    const auto present = find(database, user, push.id);
    const bool isKnown = present && present->deleted == push.deleted
                         && (push.deleted || present->payload == push.payload);
    if (isKnown) {  // sent again, because its answer was lost
        return {.id = push.id, .status = "applied", .rev = present->rev, .seq = present->seq};
    }
    if (push.baseRev != (present ? present->rev : 0)) {
        return {.id = push.id, .status = "superseded", .server = present};
    }
    const std::string payload = json::write(toJSON(push.payload));
    const auto size = static_cast<std::int64_t>(payload.size());
    if (size > quotas_.record) return refusal(push, "too_large", quotas_.record, size);
    const auto file = fileOf(push);
    if (file && !hasFile(*file)) return refusal(push, "missing_attachment", 0, 0);
    if (quotas_.records && !push.deleted) {
        const SyncStateResponse state = measured(database, user);
        const std::int64_t used = *state.recordBytes + *state.revisionBytes;
        if (used + size > *quotas_.records) return refusal(push, "quota", *quotas_.records, size);
    }

    if (present) keepRevision(database, user, *present);
    PushResult result{
        .id = push.id,
        .status = "applied",
        .rev = push.baseRev + 1,
        .seq = nextSeq(database, user)};
    Statement& store = database.cached(
        "INSERT INTO records (user, id, kind, rev, seq, deleted, payload, updated, sha256) "
        "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9) ON CONFLICT (user, id) DO UPDATE SET "
        "kind = ?3, rev = ?4, seq = ?5, deleted = ?6, payload = ?7, updated = ?8, sha256 = ?9");
    store.bindText(1, user);
    store.bindText(2, push.id.wireText());
    store.bindText(3, push.kind);
    store.bindInteger(4, *result.rev);
    store.bindInteger(5, *result.seq);
    store.bindInteger(6, push.deleted ? 1 : 0);
    store.bindText(7, payload);
    store.bindText(8, wire::formatDate(push.updatedAt));
    store.bindNull(9);
    if (file) store.bindText(9, *file);
    store.step();
    return result;
}

std::optional<SyncRecord> Records::find(
    SQLiteDatabase& database, const std::string& user, const Uuid& id) {
    Statement& select = database.cached(
        std::string("SELECT ") + columns + " FROM records WHERE user = ? AND id = ?");
    select.bindText(1, user);
    select.bindText(2, id.wireText());
    std::optional<SyncRecord> found;
    if (select.step()) found = recordIn(select);
    select.reset();
    return found;
}

void Records::keepRevision(
    SQLiteDatabase& database, const std::string& user, const SyncRecord& record) {
    if (record.deleted) return;
    Statement& insert =
        database.cached("INSERT INTO revisions (user, id, kind, reason, payload, updated) "
                        "VALUES (?, ?, ?, 'replaced', ?, ?)");
    insert.bindText(1, user);
    insert.bindText(2, record.id.wireText());
    insert.bindText(3, record.kind);
    insert.bindText(4, json::write(toJSON(record.payload)));
    insert.bindText(5, wire::formatDate(record.updatedAt));
    insert.step();
    Statement& prune = database.cached(
        "DELETE FROM revisions WHERE user = ?1 AND id = ?2 AND key NOT IN (SELECT key FROM "
        "revisions WHERE user = ?1 AND id = ?2 ORDER BY key DESC LIMIT ?3)");
    prune.bindText(1, user);
    prune.bindText(2, record.id.wireText());
    prune.bindInteger(3, keptRevisions);
    prune.step();
}

SyncStateResponse Records::measured(SQLiteDatabase& database, const std::string& user) {
    SyncStateResponse state{.head = headOf(database, user)};
    Statement& records = database.cached(
        "SELECT COUNT(*) FILTER (WHERE deleted = 0), COUNT(*) FILTER (WHERE deleted = 1), "
        "TOTAL(LENGTH(payload)) FROM records WHERE user = ?");
    records.bindText(1, user);
    if (records.step()) {
        state.records = records.integer(0);
        state.tombstones = records.integer(1);
        state.recordBytes = records.integer(2);
    }
    records.reset();
    Statement& history =
        database.cached("SELECT TOTAL(LENGTH(payload)) FROM revisions WHERE user = ?");
    history.bindText(1, user);
    state.revisionBytes = history.step() ? history.integer(0) : 0;
    history.reset();
    return state;
}

SyncStateResponse Records::state(const std::string& user) {
    return database_.read([&](SQLiteDatabase& database) {
        SyncStateResponse state = measured(database, user);
        state.recordQuotaBytes = quotas_.records;
        return state;
    });
}

std::int64_t Records::head(const std::string& user) {
    return database_.read([&](SQLiteDatabase& database) { return headOf(database, user); });
}

std::vector<RecordRevision> Records::revisions(const std::string& user, const Uuid& record) {
    return database_.read([&](SQLiteDatabase& database) {
        std::vector<RecordRevision> list;
        Statement& select = database.cached(
            "SELECT kind, reason, updated, payload FROM revisions WHERE user = ? AND id = ? "
            "ORDER BY key DESC");
        select.bindText(1, user);
        select.bindText(2, record.wireText());
        while (select.step()) {
            list.push_back(
                {.kind = select.text(0).value_or(""),
                 .reason = select.text(1).value_or(""),
                 .updatedAt = wire::parseDate(select.text(2).value_or("")).value_or(Instant()),
                 .payload = payloadIn(select.text(3).value_or("{}"))});
        }
        return list;
    });
}

std::optional<SyncRecord> Records::record(const std::string& user, const Uuid& id) {
    return database_.read([&](SQLiteDatabase& database) { return find(database, user, id); });
}

std::vector<std::string> Records::removeUnused(
    const std::string& user, const std::string& digest, const std::function<void()>& remove) {
    return database_.transact([&](SQLiteDatabase& database) {
        std::vector<std::string> ids;
        Statement& select =
            database.cached("SELECT id FROM records WHERE user = ? AND sha256 = ? AND deleted = 0");
        select.bindText(1, user);
        select.bindText(2, digest);
        while (select.step()) {
            ids.push_back(select.text(0).value_or(""));
        }
        select.reset();
        if (ids.empty()) remove();
        return ids;
    });
}

}  // namespace tesserine::server
