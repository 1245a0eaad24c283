#include "core/store/LibraryBackup.h"

#include "base/FailPoint.h"
#include "base/Files.h"
#include "base/Uuid.h"
#include "core/store/ExternalValues.h"
#include "core/store/StoreCore.h"
#include "core/store/StoreSchema.h"
#include "core/store/TesserineStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace tesserine {
namespace {

constexpr const char* makingPrefix = ".making-";
constexpr Instant::Duration day{86'400.0};
constexpr auto privateMode =
    std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
constexpr int keptDays = 7;
constexpr int keptWeeks = 4;
constexpr int keptMonths = 6;

/// "2026-03-14 09.15.00 daily": sorts by time and is a safe name everywhere. UTC.
std::string nameFor(Instant when, const std::string& reason) {
    std::string text = when.iso().substr(0, 19);
    text[10] = ' ';
    std::ranges::replace(text, ':', '.');
    return text + " " + reason;
}

/// Reads such a name; other folders are none of ours.
std::optional<LibraryBackup> readName(const std::filesystem::path& folder) {
    const std::string name = folder.filename().string();
    if (name.size() < 21 || name[19] != ' ') return std::nullopt;
    std::string iso = name.substr(0, 19);
    iso[10] = 'T';
    iso[13] = iso[16] = ':';
    const auto when = Instant::parseISO(iso + "Z");
    if (!when) return std::nullopt;
    std::string reason = name.substr(20);
    reason = reason.substr(0, reason.find(' '));  // without the number of a second one
    return LibraryBackup{.folder = folder, .createdAt = *when, .reason = reason};
}

std::uint64_t sizeOf(const std::filesystem::path& folder) {
    std::uint64_t size = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, ignored)) {
        if (entry.is_regular_file(ignored)) size += entry.file_size(ignored);
    }
    return size;
}

std::unique_ptr<SQLiteDatabase> openCopy(const std::filesystem::path& file) {
    return std::make_unique<SQLiteDatabase>(
        file,
        SQLiteDatabase::Options{
            .file = "backup",
            .query = "Backup query",
            .access = SQLiteDatabase::Access::readOnly,
            .journal = SQLiteDatabase::Journal::keep,
            .isHardened = false,
        });
}

std::set<std::string> externalNames(SQLiteDatabase& database) {
    std::set<std::string> names;
    for (const auto& entity : Schema::library().entities()) {
        for (const auto& attribute : entity.attributes) {
            if (!attribute.isExternal) continue;
            Statement row = database.prepare(
                "SELECT " + attribute.column + " FROM " + entity.table + " WHERE length("
                + attribute.column + ") = 37 AND substr(" + attribute.column + ", 1, 1) = x'02'");
            while (row.step()) {
                if (auto name = ExternalValues::fileName(row.blob(0))) names.insert(*name);
            }
        }
    }
    return names;
}

/// Links every file the copied database names; false when one went away in between, with its row.
bool linkExternal(
    const ExternalValues& source, const ExternalValues& target, SQLiteDatabase& copy) {
    const auto names = externalNames(copy);
    if (names.empty()) return true;
    files::createPrivateFolder(*target.folder());
    for (const std::string& name : names) {
        const auto place = *target.folder() / name;
        if (std::filesystem::exists(place)) continue;
        if (!std::filesystem::exists(*source.folder() / name)) return false;
        files::linkOrCopy(*source.folder() / name, place);
    }
    files::syncFolder(*target.folder());
    return true;
}

bool isSound(SQLiteDatabase& database) {
    return database.integer("PRAGMA application_id") == schema::applicationID
           && database.integer("PRAGMA user_version") <= Schema::number
           && database.text("PRAGMA quick_check(1)") == "ok";
}

/// Holds the library for this process alone, if nobody has it open.
class SoleUse {
public:
    explicit SoleUse(const std::filesystem::path& library)
        : descriptor_(::open(
            (library / ".Tesserine.users").c_str(),
            O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
            0600)) {
        if (descriptor_ < 0 || ::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
            if (descriptor_ >= 0) ::close(descriptor_);
            throw BackupError::inUse();
        }
    }
    SoleUse(const SoleUse&) = delete;
    SoleUse& operator=(const SoleUse&) = delete;
    ~SoleUse() { ::close(descriptor_); }

private:
    int descriptor_;
};

std::string stamp(Instant when) {
    std::string text = when.iso().substr(0, 19);
    std::ranges::replace(text, ':', '.');
    return text;
}

}  // namespace

LibraryBackups::LibraryBackups(
    std::filesystem::path libraryFolder, const Clock& clock, Random& random, Log log)
    : library_(std::move(libraryFolder)), clock_(clock), random_(random), log_(std::move(log)) {}

LibraryBackup LibraryBackups::create(
    const TesserineStore& store,
    const std::string& reason,
    const std::optional<std::filesystem::path>& target,
    std::stop_token stop) const {
    return createFrom(store.core(), reason, target, std::move(stop));
}

LibraryBackup LibraryBackups::createFrom(
    StoreCore& core,
    const std::string& reason,
    const std::optional<std::filesystem::path>& target,
    const std::stop_token& stop) const {
    const Instant now = clock_.now();
    const std::filesystem::path place = target.value_or(freeName(now, reason));
    if (std::filesystem::exists(std::filesystem::symlink_status(place))) {
        throw BackupError::targetExists(place);
    }
    const std::filesystem::path parent = std::filesystem::absolute(place).parent_path();
    files::createPrivateFolder(parent);
    const auto making = parent / (makingPrefix + Uuid::random(random_).text());
    try {
        files::createPrivateFolder(making);
        copyInto(core, making, stop);
        FAIL_POINT("backup.made");
        std::filesystem::rename(making, place);
        files::syncFolder(parent);
        FAIL_POINT("backup.done");
    } catch (const SQLiteDatabase::Error& error) {
        discard(making);
        throw BackupError::failed(StoreCore::explain(error));
    } catch (const FileError& error) {
        discard(making);
        throw BackupError::failed(error.what());
    } catch (...) {
        discard(making);
        throw;
    }
    return {.folder = place, .createdAt = now, .reason = reason, .byteCount = sizeOf(place)};
}

void LibraryBackups::copyInto(
    StoreCore& core, const std::filesystem::path& making, const std::stop_token& stop) const {
    const auto file = making / TesserineStore::fileName;
    const ExternalValues copied(making);
    constexpr int attempts = 3;
    for (int attempt = 1;; ++attempt) {
        files::removeIfPresent(file);
        auto reader = core.openReader();
        // All pages in one step: one moment of the library, however much others write meanwhile.
        const bool isWhole =
            reader->backup(file, -1, [&](int, int) { return !stop.stop_requested(); });
        core.close(reader);
        // Until here nobody else could look into the folder that holds it.
        if (isWhole) std::filesystem::permissions(file, privateMode);
        if (!isWhole || stop.stop_requested()) throw BackupError::cancelled();
        FAIL_POINT("backup.copied");
        const auto copy = openCopy(file);
        if (!isSound(*copy)) throw BackupError::failed("The copy did not pass its examination.");
        // Files missing in the library itself are none of the copy's faults: said by the last
        // attempt.
        if (linkExternal(core.external(), copied, *copy) || attempt == attempts) break;
    }
    files::syncFile(file);
    files::syncFolder(making);
}

void LibraryBackups::discard(const std::filesystem::path& making) noexcept {
    std::error_code ignored;
    std::filesystem::remove_all(making, ignored);
}

std::filesystem::path LibraryBackups::freeName(Instant now, const std::string& reason) const {
    const auto first = folder() / nameFor(now, reason);
    auto place = first;
    for (int number = 2; std::filesystem::exists(place); ++number) {
        place = first.string() + " " + std::to_string(number);
    }
    return place;
}

std::optional<LibraryBackup> LibraryBackups::createDaily(const TesserineStore& store) const {
    const auto present = list();
    const Instant now = clock_.now();
    // A backup from the future tells of a clock that was set back: it does not hold off today's.
    if (!present.empty() && now - present.front().createdAt < day
        && now >= present.front().createdAt) {
        return std::nullopt;
    }
    if (!present.empty() && lastChange(present.front()) == store.lastTransactionNumber()) {
        return std::nullopt;
    }
    if (store.lastTransactionNumber() == 0) return std::nullopt;
    auto made = create(store, "daily");
    prune();
    return made;
}

std::int64_t LibraryBackups::lastChange(const LibraryBackup& backup) {
    try {
        return openCopy(backup.folder / TesserineStore::fileName)
            ->integer(
                "SELECT IFNULL((SELECT seq FROM sqlite_sequence WHERE name = 'Z_HISTORY'), 0)");
    } catch (const SQLiteDatabase::Error&) {
        return -1;
    }
}

std::vector<LibraryBackup> LibraryBackups::list() const {
    std::vector<LibraryBackup> result;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder(), ignored)) {
        auto backup = readName(entry.path());
        if (!backup || !entry.is_directory(ignored)) continue;
        backup->byteCount = sizeOf(entry.path());
        result.push_back(std::move(*backup));
    }
    std::ranges::sort(result, [](const LibraryBackup& a, const LibraryBackup& b) {
        return std::pair(a.createdAt, a.folder) > std::pair(b.createdAt, b.folder);
    });
    return result;
}

LibraryBackup LibraryBackups::verify(const std::filesystem::path& folder) const {
    const auto file = folder / TesserineStore::fileName;
    if (!std::filesystem::is_regular_file(file)) {
        throw BackupError::notABackup(folder, "It holds no library.");
    }
    try {
        const auto copy = openCopy(file);
        if (!isSound(*copy)) throw BackupError::notABackup(folder, "Its library is damaged.");
        const ExternalValues values(folder);
        for (const std::string& name : externalNames(*copy)) {
            if (std::filesystem::exists(*values.folder() / name)) continue;
            throw BackupError::notABackup(folder, "A file of an attachment is missing.");
        }
    } catch (const SQLiteDatabase::Error& error) {
        throw BackupError::notABackup(folder, StoreCore::explain(error));
    }
    auto backup = readName(folder).value_or(
        LibraryBackup{.folder = folder, .createdAt = fileTime(file), .reason = "manual"});
    backup.byteCount = sizeOf(folder);
    return backup;
}

Instant LibraryBackups::fileTime(const std::filesystem::path& file) {
    const auto system = std::chrono::file_clock::to_sys(std::filesystem::last_write_time(file));
    return Instant::fromSeconds(Instant::Duration(system.time_since_epoch()).count())
        .floorToMillisecond();
}

RestoreOutcome LibraryBackups::restore(const std::filesystem::path& backupFolder) const {
    RestoreOutcome outcome{.backup = verify(backupFolder), .keptAside = std::nullopt};
    files::createPrivateFolder(library_);
    const SoleUse alone(library_);
    const auto lock =
        files::FolderLock::acquire(library_ / ".Tesserine.lock", std::chrono::milliseconds(10'000));
    if (!lock) throw BackupError::inUse();

    // The new file is whole and synced beside the old one before anything is moved.
    const auto file = library_ / TesserineStore::fileName;
    const auto arriving =
        library_ / (std::string(TesserineStore::fileName) + ".new-" + Uuid::random(random_).text());
    try {
        files::copyNew(backupFolder / TesserineStore::fileName, arriving);
        beginNewHistory(arriving);
        const ExternalValues from(backupFolder);
        const ExternalValues to(library_);
        if (!linkExternal(from, to, *openCopy(arriving))) {
            throw BackupError::notABackup(backupFolder, "A file of an attachment is missing.");
        }
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(arriving, ignored);
        throw;
    }
    FAIL_POINT("restore.arrived");
    outcome.keptAside = putAside(file);
    FAIL_POINT("restore.aside");
    std::filesystem::rename(arriving, file);
    files::syncFolder(library_);
    return outcome;
}

/// The numbers of a restored history begin again at an earlier one: followers must not go on
/// counting.
void LibraryBackups::beginNewHistory(const std::filesystem::path& file) const {
    SQLiteDatabase database(
        file,
        {.file = "backup",
         .query = "Backup query",
         .access = SQLiteDatabase::Access::readWrite,
         .synchronous = SQLiteDatabase::Synchronous::full});
    schema::setHistoryID(database, random_);
}

/// Moves the library's file and its journal to names of their own.
std::optional<std::filesystem::path> LibraryBackups::putAside(
    const std::filesystem::path& file) const {
    const std::string suffix =
        ".replaced-" + stamp(clock_.now()) + "-" + Uuid::random(random_).text().substr(0, 4);
    std::optional<std::filesystem::path> aside;
    // The journal keeps its partner: "….replaced-T" and "….replaced-T-wal". The file itself goes
    // last, so that a restore that was cut off leaves it where the next one finds it.
    for (const char* part : {"-shm", "-wal", ""}) {
        const std::filesystem::path from = file.string() + part;
        if (!std::filesystem::exists(std::filesystem::symlink_status(from))) continue;
        const std::filesystem::path to = file.string() + suffix + part;
        std::filesystem::rename(from, to);
        if (*part == '\0') aside = to;
    }
    return aside;
}

std::size_t LibraryBackups::prune() const {
    const auto backups = list();
    const Instant now = clock_.now();
    std::set<std::filesystem::path> kept;
    const auto keepNewestPer = [&](Instant::Duration span, int count) {
        std::map<std::int64_t, std::filesystem::path> newest;  // by the number of the span
        for (const LibraryBackup& backup : backups) {
            const auto number =
                static_cast<std::int64_t>(std::floor(backup.createdAt.seconds() / span.count()));
            newest.try_emplace(-number, backup.folder);  // listed newest first
        }
        for (const auto& [number, folder] : newest) {
            if (count-- <= 0) break;
            kept.insert(folder);
        }
    };
    keepNewestPer(day, keptDays);
    keepNewestPer(7 * day, keptWeeks);
    keepNewestPer(30 * day, keptMonths);
    std::size_t removed = 0;
    for (const LibraryBackup& backup : backups) {
        const bool isFresh = now - backup.createdAt < day;
        if (kept.contains(backup.folder) || isFresh || backup.reason == "manual") continue;
        discard(backup.folder);
        ++removed;
    }
    sweepUnfinished();
    return removed;
}

/// Folders that a killed backup left, once they are too old to belong to a running one.
void LibraryBackups::sweepUnfinished() const {
    std::error_code ignored;
    std::vector<std::filesystem::path> left;
    for (const auto& entry : std::filesystem::directory_iterator(folder(), ignored)) {
        const bool isUnfinished = entry.path().filename().string().starts_with(makingPrefix);
        const auto age = std::chrono::file_clock::now() - entry.last_write_time(ignored);
        if (isUnfinished && age > std::chrono::hours(24)) left.push_back(entry.path());
    }
    for (const auto& path : left)
        discard(path);
}

}  // namespace tesserine
