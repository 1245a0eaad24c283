#include "core/import/AppleNoteStore.h"

#include "base/Files.h"
#include "base/Text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostFolderDepth = 64;
constexpr std::int64_t trashFolder = 1;  // ZFOLDERTYPE

SQLiteDatabase::Options storeOptions() {
    // Writable, because a write-ahead log cannot be read otherwise: it is our own copy.
    return {
        .file = "copy of the Apple Notes store",
        .query = "The Apple Notes store",
        .access = SQLiteDatabase::Access::readWrite,
        .journal = SQLiteDatabase::Journal::keep,
        .isHardened = true};
}

/// Seconds since 2001; what no calendar shows is no date.
std::optional<Instant> instantIn(const Statement& row, int column) {
    if (row.isNull(column)) return std::nullopt;
    const Instant instant = Instant::fromReferenceSeconds(row.real(column));
    static const Instant first = *Instant::parseISO("1000-01-01T00:00:00Z");
    static const Instant last = *Instant::parseISO("2999-12-31T23:59:59Z");
    const bool isDate = instant >= first && instant <= last;
    return isDate ? std::optional(instant) : std::nullopt;
}

std::string textIn(const Statement& row, int column) {
    return text::sanitized(row.text(column).value_or(""));
}

std::set<std::string, std::less<>> columnsOf(SQLiteDatabase& database, const std::string& table) {
    std::set<std::string, std::less<>> columns;
    Statement rows = database.prepare("PRAGMA table_info(" + table + ")");
    while (rows.step()) {
        columns.insert(rows.text(1).value_or(""));
    }
    return columns;
}

}  // namespace

AppleNoteStore::PrivateCopy::PrivateCopy(const fs::path& file) {
    std::string pattern = (fs::temp_directory_path() / "tesserine-notes-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw FileError::fromErrno(pattern, "made", errno);
    }
    folder_ = pattern;
    try {
        files::copyNew(file, this->file());
        const fs::path log = file.string() + "-wal";
        if (fs::is_regular_file(log)) files::copyNew(log, this->file().string() + "-wal");
    } catch (...) {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
        throw;
    }
}

AppleNoteStore::PrivateCopy::~PrivateCopy() {
    std::error_code ignored;  // nothing that could be done about it
    fs::remove_all(folder_, ignored);
}

AppleNoteStore::AppleNoteStore(const fs::path& file)
    : name_(text::sanitized(file.filename().string())), copy_(file) {
    try {
        database_ = std::make_unique<SQLiteDatabase>(copy_.file(), storeOptions());
        readColumns();
    } catch (const SQLiteDatabase::Error& error) {
        if (error.isDamage()) throw AppleNotesError::unknownLayout(name_);
        throw;
    }
    readKinds();
    readFolders();
    readNotes();
    readAttachments();
}

Bytes AppleNoteStore::text(const AppleNote& note) {
    Statement& rows = database_->cached("SELECT ZDATA FROM ZICNOTEDATA WHERE ZNOTE = ?");
    rows.bindInteger(1, note.key);
    Bytes data;
    if (rows.step()) {
        const auto blob = rows.blob(0);
        data.assign(blob.begin(), blob.end());
    }
    rows.reset();
    return data;
}

std::optional<AppleAttachment> AppleNoteStore::attachment(const std::string& identifier) {
    const auto known = attachments_.find(identifier);
    if (known == attachments_.end()) return std::nullopt;
    Statement& rows = database_->cached(
        "SELECT " + value({"ZTYPEUTI", "ZTYPEUTI1"}) + ", " + value({"ZTITLE", "ZUSERTITLE"}) + ", "
        + value({"ZALTTEXT"}) + ", " + value({"ZURLSTRING"}) + ", "
        + value({"ZTOKENCONTENTIDENTIFIER"}) + ", " + value({"ZMERGEABLEDATA1", "ZMERGEABLEDATA"})
        + ", " + value({"ZMEDIA"}) + " FROM ZICCLOUDSYNCINGOBJECT WHERE Z_PK = ?");
    rows.bindInteger(1, known->second);
    if (!rows.step()) return std::nullopt;
    AppleAttachment result{
        .type = textIn(rows, 0),
        .title = textIn(rows, 1),
        .text = textIn(rows, 2),
        .address = textIn(rows, 3),
        .target = textIn(rows, 4)};
    const auto table = rows.blob(5);
    result.table.assign(table.begin(), table.end());
    const std::int64_t media = rows.integer(6);
    rows.reset();
    if (media == 0) return result;
    Statement& file = database_->cached(
        "SELECT " + value({"ZIDENTIFIER"}) + ", " + value({"ZFILENAME"})
        + " FROM ZICCLOUDSYNCINGOBJECT WHERE Z_PK = ?");
    file.bindInteger(1, media);
    if (file.step()) {
        result.media = textIn(file, 0);
        result.filename = textIn(file, 1);
    }
    file.reset();
    return result;
}

void AppleNoteStore::readColumns() {
    columns_ = columnsOf(*database_, "ZICCLOUDSYNCINGOBJECT");
    dataColumns_ = columnsOf(*database_, "ZICNOTEDATA");
    const auto kindColumns = columnsOf(*database_, "Z_PRIMARYKEY");
    const bool isKnown = has({"Z_PK"}) && has({"Z_ENT"}) && has({"ZIDENTIFIER"}) && has({"ZFOLDER"})
                         && has({"ZTITLE1", "ZTITLE"}) && dataColumns_.contains("ZNOTE")
                         && dataColumns_.contains("ZDATA") && kindColumns.contains("Z_ENT")
                         && kindColumns.contains("Z_NAME");
    if (!isKnown) throw AppleNotesError::unknownLayout(name_);
}

void AppleNoteStore::readKinds() {
    Statement rows = database_->prepare("SELECT Z_NAME, Z_ENT FROM Z_PRIMARYKEY");
    while (rows.step()) {
        kinds_[textIn(rows, 0)] = rows.integer(1);
    }
    if (!kinds_.contains("ICNote")) throw AppleNotesError::unknownLayout(name_);
}

void AppleNoteStore::readFolders() {
    Statement rows = database_->prepare(
        "SELECT Z_PK, " + value({"ZTITLE2", "ZTITLE"}) + ", " + value({"ZPARENT"}) + ", "
        + value({"ZFOLDERTYPE"}) + ", ZIDENTIFIER FROM ZICCLOUDSYNCINGOBJECT WHERE Z_ENT = ?");
    rows.bindInteger(1, kind("ICFolder"));
    while (rows.step()) {
        Folder folder{.name = std::string(text::trimmed(textIn(rows, 1)))};
        if (!rows.isNull(2)) folder.parent = rows.integer(2);
        folder.isTrash =
            rows.integer(3) == trashFolder || textIn(rows, 4).starts_with("TrashFolder");
        folders_[rows.integer(0)] = std::move(folder);
    }
}

void AppleNoteStore::readNotes() {
    Statement rows = database_->prepare(
        "SELECT Z_PK, ZIDENTIFIER, " + value({"ZTITLE1", "ZTITLE"}) + ", "
        + value({"ZCREATIONDATE3", "ZCREATIONDATE2", "ZCREATIONDATE1", "ZCREATIONDATE"}) + ", "
        + value({"ZMODIFICATIONDATE1", "ZMODIFICATIONDATE"}) + ", ZFOLDER, " + value({"ZISPINNED"})
        + ", " + value({"ZISPASSWORDPROTECTED"})
        + " FROM ZICCLOUDSYNCINGOBJECT WHERE Z_ENT = ? AND " + value({"ZMARKEDFORDELETION"})
        + " IS NOT 1 ORDER BY Z_PK");
    rows.bindInteger(1, kind("ICNote"));
    while (rows.step()) {
        const auto folder = pathOf(rows.isNull(5) ? std::nullopt : std::optional(rows.integer(5)));
        if (!folder) continue;
        notes_.push_back(
            {.key = rows.integer(0),
             .identifier = textIn(rows, 1),
             .title = textIn(rows, 2),
             .createdAt = instantIn(rows, 3),
             .updatedAt = instantIn(rows, 4),
             .folder = *folder,
             .isPinned = rows.integer(6) != 0,
             .isLocked = rows.integer(7) != 0});
    }
}

void AppleNoteStore::readAttachments() {
    if (!has({"ZTYPEUTI", "ZTYPEUTI1"})) return;
    Statement rows = database_->prepare(
        "SELECT ZIDENTIFIER, Z_PK FROM ZICCLOUDSYNCINGOBJECT WHERE ZIDENTIFIER IS NOT NULL AND "
        + value({"ZTYPEUTI", "ZTYPEUTI1"}) + " IS NOT NULL");
    while (rows.step()) {
        attachments_.emplace(textIn(rows, 0), rows.integer(1));
    }
}

/// The names from the top; none for what lies in the folder of deleted notes.
std::optional<std::vector<std::string>> AppleNoteStore::pathOf(
    std::optional<std::int64_t> folder) const {
    std::vector<std::string> path;
    // A parent may be its own child in a damaged store.
    while (folder && path.size() < mostFolderDepth) {
        const auto found = folders_.find(*folder);
        if (found == folders_.end()) break;
        if (found->second.isTrash) return std::nullopt;
        path.push_back(found->second.name.empty() ? "Untitled" : found->second.name);
        folder = found->second.parent;
    }
    std::ranges::reverse(path);
    return path;
}

bool AppleNoteStore::has(Names columns) const {
    return std::ranges::any_of(columns, [&](auto name) { return columns_.contains(name); });
}

/// An expression for the first of these columns that is there and holds something.
std::string AppleNoteStore::value(Names columns) const {
    std::string list;
    for (const std::string_view name : columns) {
        if (columns_.contains(name)) list += std::string(name) + ", ";
    }
    return list.empty() ? "NULL" : "COALESCE(" + list + "NULL)";
}

std::int64_t AppleNoteStore::kind(const std::string& name) const {
    const auto found = kinds_.find(name);
    return found == kinds_.end() ? -1 : found->second;
}

}  // namespace tesserine
