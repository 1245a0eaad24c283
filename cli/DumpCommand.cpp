#include "base/sqlite/SQLiteDatabase.h"
#include "cli/CommandError.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

#include <boost/json/object.hpp>

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

/// Writes objects one after the other and counts the values that cannot be read.
class Dump {
public:
    explicit Dump(Session& session)
        : session_(session), context_(session.context()), snapshot_(context_.reader()) {}

    void writeAll(const EntityDescription& entity) {
        for (std::size_t offset = 0;; offset += pageSize) {
            const auto page =
                context_.fetchObjects(entity.kind, {.limit = pageSize, .offset = offset});
            for (std::size_t i = 0; i < page.size(); ++i) {
                write(*page[i]);
                if (i % heavyCount == 0) context_.releaseLargeValues();
            }
            context_.reset();
            if (page.size() < pageSize) return;
        }
    }

    std::size_t unreadable() const { return unreadable_; }

private:
    void write(StoreObject& object) {
        session_.throwIfStopped();
        boost::json::object line{{"entity", object.entity().name}};
        const auto noteUnreadable = [&](const std::string&) { ++unreadable_; };
        for (auto& [key, value] : asJSON(object, Detail::whole, noteUnreadable)) {
            line[key] = std::move(value);
        }
        session_.output().json(line);
    }

    Session& session_;
    StoreContext& context_;
    Snapshot snapshot_;
    std::size_t unreadable_ = 0;
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
    Dump dump(session);
    for (const EntityDescription* entity : chosenEntities(arguments)) {
        dump.writeAll(*entity);
    }
    if (dump.unreadable() > 0) {
        throw CommandError::badInput(
            counted(dump.unreadable(), "value") + " could not be read and "
            + (dump.unreadable() == 1 ? "is" : "are") + " null above.");
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
               .choices = entityNames()}},
         .details = "Relationships are written as ids, binary values as their size and digest.",
         .example = "tesserine dump --entity CDNote",
         .run = dump}};
}

}  // namespace tesserine::cli
