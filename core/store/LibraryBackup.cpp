#include "core/store/LibraryBackup.h"

#include "base/FailPoint.h"
#include "base/Files.h"
#include "base/Uuid.h"
#include "core/store/ExternalValues.h"
#include "core/store/LibraryExchange.h"
#include "core/store/LibraryUse.h"
#include "core/store/StoreCore.h"
#include "core/store/StoreSchema.h"
#include "core/store/TesserineStore.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>

namespace tesserine {
namespace {

constexpr const char* makingPrefix = ".making-";
constexpr Instant::Duration day{86'400.0};
constexpr auto privateMode =
    std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
/// In a backup: the names of files that the library had lost before, one on a line.
constexpr const char* missingName = "Missing files.txt";
constexpr std::uint64_t missingLimit = 100'000'000;
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

std::uint64_t folderSize(const std::filesystem::path& folder) {
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

/// Names of files that the library itself had lost when it was backed up.
std::set<std::string> knownMissing(const std::filesystem::path& backup) {
    const auto file = backup / missingName;
    if (!std::filesystem::exists(file)) return {};
    const Bytes bytes = files::read(file, missingLimit, files::Links::refuse);
    std::istringstream lines{std::string(textOf(bytes))};
    std::set<std::string> names;
    for (std::string line; std::getline(lines, line);) {
        names.insert(line);
    }
    return names;
}

/// Links every file the copied database names, and returns the names of those that are not there.
std::set<std::string> linkExternal(
    const ExternalValues& source, const ExternalValues& target, SQLiteDatabase& copy) {
    const auto names = ExternalValues::namesIn(copy);
    std::set<std::string> missing;
    if (names.empty()) return missing;
    files::createPrivateFolder(*target.folder());
    for (const std::string& name : names) {
        const auto from = *source.folder() / name;
        const auto place = *target.folder() / name;
        if (!std::filesystem::exists(from)) {
            if (!std::filesystem::exists(place)) missing.insert(name);
            continue;
        }
        if (std::filesystem::exists(place)) {
            // Never changed once it is written: another size is damage.
            if (std::filesystem::file_size(place) == std::filesystem::file_size(from)) continue;
            files::removeIfPresent(place);
        }
        files::linkOrCopy(from, place);
    }
    files::syncFolder(*target.folder());
    return missing;
}

/// Errors of the standard library's file functions as ours.
template <class Work>
auto withFileErrors(Work work) {
    try {
        return work();
    } catch (const std::filesystem::filesystem_error& error) {
        throw FileError::fromErrno(error.path1(), "reached", error.code().value());
    }
}

bool isSound(SQLiteDatabase& database) {
    return schema::isLibrary(database) && database.integer("PRAGMA user_version") <= Schema::number
           && database.text("PRAGMA quick_check(1)") == "ok";
}

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
    return withFileErrors([&] { return createFrom(store.core(), reason, target, stop); });
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
        throw BackupError::failed(StoreCore::explain(error));
    } catch (...) {
        discard(making);
        throw;
    }
    return {.folder = place, .createdAt = now, .reason = reason, .byteCount = folderSize(place)};
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
        const auto missing = linkExternal(core.external(), copied, *copy);
        if (missing.empty()) break;
        // One may have gone away with its row in between. What is missing again and again was
        // missing in the library, which is no fault of the copy.
        if (attempt < attempts) continue;
        std::string lines;
        for (const std::string& name : missing) {
            lines += name + "\n";
        }
        files::writeNew(making / missingName, bytesOf(lines));
        break;
    }
    beginNewHistory(file);
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
        backup->byteCount = folderSize(entry.path());
        result.push_back(std::move(*backup));
    }
    std::ranges::sort(result, [](const LibraryBackup& a, const LibraryBackup& b) {
        return std::pair(a.createdAt, a.folder) > std::pair(b.createdAt, b.folder);
    });
    return result;
}

LibraryBackup LibraryBackups::verify(const std::filesystem::path& folder) const {
    const auto file = folder / TesserineStore::fileName;
    std::error_code ignored;
    const auto type = std::filesystem::status(file, ignored).type();
    if (type != std::filesystem::file_type::regular) {
        const bool isUnknown = type == std::filesystem::file_type::none;
        throw BackupError::notABackup(
            folder, isUnknown ? "It cannot be read." : "It holds no library.");
    }
    try {
        const auto copy = openCopy(file);
        if (copy->integer("PRAGMA user_version") > Schema::number) {
            throw BackupError::notABackup(
                folder, "Its library was written by a newer version of Tesserine.");
        }
        if (!isSound(*copy)) throw BackupError::notABackup(folder, "Its library is damaged.");
        const ExternalValues values(folder);
        const auto known = knownMissing(folder);
        for (const std::string& name : ExternalValues::namesIn(*copy)) {
            const bool isThere = std::filesystem::exists(*values.folder() / name, ignored);
            if (isThere || known.contains(name)) continue;
            throw BackupError::notABackup(folder, "A file of an attachment is missing.");
        }
    } catch (const SQLiteDatabase::Error& error) {
        throw BackupError::notABackup(folder, StoreCore::explain(error));
    }
    auto backup = readName(folder).value_or(
        LibraryBackup{.folder = folder, .createdAt = fileTime(file), .reason = "manual"});
    backup.byteCount = folderSize(folder);
    return backup;
}

std::optional<std::size_t> LibraryBackups::noteCount(const std::filesystem::path& folder) {
    try {
        const auto count =
            openCopy(folder / TesserineStore::fileName)
                ->integer(
                    "SELECT COUNT(*) FROM ZCDNOTE WHERE ZTRASHEDAT IS NULL AND ZISTEMPLATE = 0");
        return static_cast<std::size_t>(count);
    } catch (const SQLiteDatabase::Error&) {
        return std::nullopt;
    }
}

Instant LibraryBackups::fileTime(const std::filesystem::path& file) {
    const auto system = std::chrono::file_clock::to_sys(std::filesystem::last_write_time(file));
    return Instant::fromSeconds(Instant::Duration(system.time_since_epoch()).count())
        .floorToMillisecond();
}

RestoreOutcome LibraryBackups::restore(const std::filesystem::path& backupFolder) const {
    return withFileErrors([&] { return restoreFrom(backupFolder); });
}

RestoreOutcome LibraryBackups::restoreFrom(const std::filesystem::path& backupFolder) const {
    RestoreOutcome outcome{.backup = verify(backupFolder), .keptAside = std::nullopt};
    files::createPrivateFolder(library_);
    const auto lock =
        files::FolderLock::acquire(library_ / ".Tesserine.lock", std::chrono::milliseconds(10'000));
    const auto alone = lock ? LibraryUse::alone(library_) : std::nullopt;
    if (!alone) throw BackupError::inUse();
    exchange::finish(library_);

    // The new file is whole and synced beside the old one before anything is moved.
    const auto arriving = exchange::arrivingName(library_, Uuid::random(random_).text());
    try {
        files::copyNew(backupFolder / TesserineStore::fileName, arriving);
        beginNewHistory(arriving);
        const ExternalValues from(backupFolder);
        const ExternalValues to(library_);
        linkExternal(from, to, *openCopy(arriving));
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(arriving, ignored);
        throw;
    }
    FAIL_POINT("restore.arrived");
    const std::string suffix =
        ".replaced-" + stamp(clock_.now()) + "-" + Uuid::random(random_).text().substr(0, 4);
    outcome.keptAside = exchange::replaceLibrary(library_, arriving, suffix);
    alone->markClosed();
    return outcome;
}

/// The numbers of a restored history begin again at an earlier one: followers must not go on
/// counting. Nor does a journal of the original belong to a copy.
void LibraryBackups::beginNewHistory(const std::filesystem::path& file) const {
    SQLiteDatabase database(
        file,
        {.file = "backup",
         .query = "Backup query",
         .access = SQLiteDatabase::Access::readWrite,
         .journal = SQLiteDatabase::Journal::keep,
         .synchronous = SQLiteDatabase::Synchronous::full,
         .isHardened = true});
    schema::setHistoryID(database, random_);
}

std::size_t LibraryBackups::prune() const {
    return withFileErrors([&] { return removeUnkept(); });
}

std::size_t LibraryBackups::removeUnkept() const {
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
        // Half removed it must not look like a backup.
        const auto leaving = folder() / (makingPrefix + Uuid::random(random_).text());
        std::filesystem::rename(backup.folder, leaving);
        discard(leaving);
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
    for (const auto& path : left) {
        discard(path);
    }
}

}  // namespace tesserine
