#include "base/sqlite/SQLiteDatabase.h"
#include "cli/CommandError.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "sync/RecordFields.h"
#include "sync/RecordKinds.h"

#include <boost/json/object.hpp>

#include <algorithm>
#include <compare>
#include <optional>
#include <vector>

namespace tesserine::cli {

namespace {

/// Objects in memory at a time, and how many of them with their bodies and files.
constexpr std::size_t pageSize = 1000;
constexpr std::size_t heavyCount = 20;

/// One moment of the library, however much others write meanwhile.
class Snapshot {
public:
    explicit Snapshot(SQLiteDatabase& reader) : reader_(reader) { reader_.execute("BEGIN"); }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot() {
        try {
            reader_.execute("COMMIT");
        } catch (const SQLiteDatabase::Error&) {
            // Nothing was written; closing the connection ends the transaction as well.
        }
    }

private:
    SQLiteDatabase& reader_;
};

/// Writes the objects of an entity one after the other, by their ids, so that equal libraries are
/// written alike. What cannot be read is counted; it hides nothing else.
class Dump {
public:
    enum class Extent { everything, shared };

    Dump(Session& session, Extent extent)
        : session_(session),
          extent_(extent),
          context_(session.context()),
          snapshot_(context_.reader()) {}

    void writeAll(const EntityDescription& entity) {
        if (extent_ == Extent::shared && !recordKindOf(entity.kind)) return;
        std::size_t count = 0;
        for (const Row& row : rowsByID(entity)) {
            write(entity, row.key);
            if (++count % heavyCount == 0) context_.releaseLargeValues();
            if (count % pageSize == 0) context_.reset();
        }
        context_.reset();
    }

    std::size_t unreadableValues() const { return unreadableValues_; }
    /// Throws what kept objects from being read at all.
    void throwIfDamaged() const {
        if (damage_) throw StoreError(*damage_);
    }

private:
    struct Row {
        std::optional<Uuid> id;
        std::int64_t key = 0;
        auto operator<=>(const Row&) const = default;
    };

    /// Looks at the rows as they lie in the table: a damaged index hides none of them.
    std::vector<Row> rowsByID(const EntityDescription& entity) {
        std::vector<Row> rows;
        try {
            for (bool isMore = true; isMore; context_.reset()) {
                session_.throwIfStopped();
                const auto page =
                    context_.fetchObjects(entity.kind, {.limit = pageSize, .offset = rows.size()});
                for (StoreObject* const object : page) {
                    rows.push_back({object->uuid(), object->key()});
                }
                isMore = page.size() == pageSize;
            }
        } catch (const StoreError& error) {
            damage_ = error;
        }
        std::ranges::sort(rows);
        return rows;
    }

    void write(const EntityDescription& entity, std::int64_t key) {
        session_.throwIfStopped();
        try {
            LinkSlot row{.key = key};
            if (StoreObject* const object = context_.resolve(entity.kind, row)) write(*object);
        } catch (const StoreError& error) {
            damage_ = error;
        }
    }

    void write(StoreObject& object) {
        const EntityDescription& entity = object.entity();
        boost::json::object line{{"entity", entity.name}};
        const auto noteUnreadable = [&](const std::string&) { ++unreadableValues_; };
        for (auto& [key, value] : asJSON(object, Detail::whole, noteUnreadable)) {
            if (extent_ == Extent::shared && !isShared(entity, key)) continue;
            if (value.is_array()) sortIDs(value.get_array());
            line[key] = std::move(value);
        }
        session_.output().json(line);
    }

    static void sortIDs(boost::json::array& ids) {
        std::ranges::sort(ids, {}, [](const boost::json::value& id) {
            return id.is_string() ? std::string_view(id.get_string()) : std::string_view();
        });
    }

    Session& session_;
    const Extent extent_;
    StoreContext& context_;
    Snapshot snapshot_;
    std::size_t unreadableValues_ = 0;
    std::optional<StoreError> damage_;
};

std::vector<const EntityDescription*> chosenEntities(const Arguments& arguments) {
    std::vector<const EntityDescription*> chosen;
    if (const auto name = arguments.text("entity")) {
        chosen.push_back(Schema::library().entityNamed(*name));
    } else {
        for (const EntityDescription& entity : Schema::library().entities()) {
            chosen.push_back(&entity);
        }
    }
    return chosen;
}

ExitStatus dump(Session& session, const Arguments& arguments) {
    const bool isShared = arguments.has("shared");
    Dump dump(session, isShared ? Dump::Extent::shared : Dump::Extent::everything);
    for (const EntityDescription* entity : chosenEntities(arguments)) {
        dump.writeAll(*entity);
    }
    dump.throwIfDamaged();
    if (const std::size_t count = dump.unreadableValues()) {
        throw CommandError::badInput(
            counted(count, "value") + " could not be read and " + (count == 1 ? "is" : "are")
            + " null above.");
    }
    return ExitStatus::done;
}

std::vector<std::string_view> entityNames() {
    std::vector<std::string_view> names;
    for (const EntityDescription& entity : Schema::library().entities()) {
        names.push_back(entity.name);
    }
    return names;
}

}  // namespace

std::vector<Command> dumpCommands() {
    return {
        {.path = "dump",
         .summary = "Writes every object of the library, one JSON object a line",
         .options =
             {{.name = "entity",
               .value = "ENTITY",
               .summary = "Only objects of this entity, such as CDNote",
               .choices = entityNames()},
              {.name = "shared",
               .summary =
                   "Only what devices have in common after a sync, for comparing libraries"}},
         .details =
             "Objects of one entity follow each other by id. Relationships are written as ids, "
             "binary values as their size and digest. With --shared, everything that stays on a "
             "device is left out: earlier versions, reports of imports, sources of imported notes, "
             "thumbnails, marks of conflicts and the bookkeeping of sync.",
         .example = "tesserine dump --entity CDNote",
         .run = dump}};
}

}  // namespace tesserine::cli
