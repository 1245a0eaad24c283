#include "base/Digest.h"
#include "core/body/BodyError.h"
#include "core/body/CanonicalBody.h"
#include "core/services/LibraryExamination.h"
#include "core/services/NoteService.h"
#include "core/store/ExternalValues.h"
#include "core/store/StoreCore.h"
#include "core/store/TesserineStore.h"

#include <algorithm>
#include <chrono>

namespace tesserine {
namespace {

using Kind = LibraryProblem::Kind;

constexpr std::size_t progressInterval = 500;
/// A younger file may belong to a save that another process is about to commit.
constexpr std::chrono::hours orphanAge{24};

const std::string& identityColumn(const EntityDescription& entity) {
    return entity.attributes[*entity.identity].column;
}

/// What the value is to a person.
std::string valueName(const AttributeDescription& attribute) {
    if (attribute.name == "html") return "body";
    if (attribute.name == "fileData") return "content";
    if (attribute.name == "originalSource") return "original source";
    if (attribute.name == "thumbnailData") return "thumbnail";
    return attribute.name;
}

/// Whether a body and its text are what the services would store. A body beyond the limit cannot be
/// brought into another form and counts as one.
bool isAsStored(std::string_view html, std::string_view plainText) {
    try {
        const CanonicalBody canonical = canonicalBody(html);
        return canonical.html == html && canonical.plainText == plainText;
    } catch (const BodyError&) {
        return true;
    }
}

/// Names of the files in the folder of large values that are older than `orphanAge`.
std::vector<std::string> oldFiles(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        // File times come from the machine's clock, so they are compared with it and with no other.
        const auto age = std::chrono::file_clock::now() - entry.last_write_time(ignored);
        const std::string name = entry.path().filename().string();
        if (age > orphanAge && Uuid::parse(name)) names.push_back(name);
    }
    return names;
}

}  // namespace

void LibraryExamination::checkFiles() {
    const ExternalValues& external = store_.core().external();
    if (!external.folder()) return;
    // Listed before the rows are read: what a row names later is not among the old ones.
    const auto old = oldFiles(*external.folder());
    std::set<std::string> used;
    for (const EntityDescription& entity : Schema::library().entities()) {
        for (const AttributeDescription& attribute : entity.attributes) {
            if (attribute.isExternal) checkFilesOf(entity, attribute, used);
        }
    }
    report_.files = used.size();
    for (const std::string& name : old) {
        if (used.contains(name)) continue;
        if (repairs()) external.remove(name);
        add(Kind::orphanedFile,
            "The file " + name + " belonged to nothing in the library",
            "it was removed");
    }
}

void LibraryExamination::checkFilesOf(
    const EntityDescription& entity,
    const AttributeDescription& attribute,
    std::set<std::string>& used) {
    const std::filesystem::path folder = *store_.core().external().folder();
    const auto missing = [&](const std::string& name) {
        std::error_code ignored;
        return !std::filesystem::is_regular_file(folder / name, ignored);
    };
    std::vector<std::pair<RowID, std::string>> suspects;
    {
        Statement row = context_->reader().prepare(
            "SELECT Z_PK, " + identityColumn(entity) + ", substr(" + attribute.column
            + ", 1, 64) FROM " + entity.table + " WHERE substr(" + attribute.column
            + ", 1, 1) = x'02'");
        while (row.step()) {
            const std::string name = ExternalValues::fileName(row.blob(2)).value_or("");
            if (name.empty() || missing(name)) {
                suspects.push_back({{row.integer(0), Uuid::fromBytes(row.blob(1))}, name});
            }
            used.insert(name);
        }
    }
    // Another process may have changed the row, and removed its old file, while it was read.
    for (const auto& [suspect, name] : suspects) {
        Statement row = context_->reader().prepare(
            "SELECT " + attribute.column + " FROM " + entity.table + " WHERE Z_PK = ?");
        row.bindInteger(1, suspect.key);
        const bool isStillThere =
            row.step() && ExternalValues::fileName(row.blob(0)).value_or("") == name;
        if (!isStillThere) continue;
        add(Kind::missingFile,
            "The " + valueName(attribute) + " of the " + nameOf(entity, suspect) + " is missing");
    }
}

void LibraryExamination::checkDigests() {
    for (const EntityDescription& entity : Schema::library().entities()) {
        for (const AttributeDescription& attribute : entity.attributes) {
            if (isStopped()) return;
            if (attribute.isDigested) checkDigestsOf(entity, attribute);
        }
    }
}

void LibraryExamination::checkDigestsOf(
    const EntityDescription& entity, const AttributeDescription& attribute) {
    const bool isFile = entity.kind == EntityKind::attachment;
    Statement row = context_->reader().prepare(
        "SELECT Z_PK, " + identityColumn(entity) + ", " + attribute.column + ", SHA256"
        + (isFile ? ", ZSHA256" : ", NULL") + " FROM " + entity.table
        + " LEFT JOIN Z_DIGEST ON ENTITY = '" + entity.name + "' AND PK = Z_PK AND ATTRIBUTE = '"
        + attribute.name + "' WHERE " + attribute.column + " IS NOT NULL");
    std::size_t done = 0;
    while (row.step() && !isStopped()) {
        if (++done % progressInterval == 0) progress("digests", done, report_.objects);
        if (isFile) ++report_.attachments;
        std::optional<Bytes> decoded;
        if (attribute.isExternal) {
            decoded = store_.core().external().decode(row.blob(2));
            if (!decoded && ExternalValues::fileName(row.blob(2))) continue;  // already reported
        }
        const SHA256Digest found = sha256(
            attribute.isExternal ? std::span<const std::uint8_t>(decoded.value_or(Bytes{}))
                                 : bytesOf(row.textView(2)));
        const auto written = row.blob(3);
        const bool isAsWritten = row.isNull(3) || std::ranges::equal(written, found);
        const bool isAsAttached = row.isNull(4) || row.textView(4) == hex(found);
        if (isAsWritten && isAsAttached) continue;
        if (entity.kind == EntityKind::note && attribute.name == "html") {
            damagedNotes_.insert(row.integer(0));
        }
        const RowID damaged{row.integer(0), Uuid::fromBytes(row.blob(1))};
        add(Kind::digestMismatch,
            "The " + valueName(attribute) + " of the " + nameOf(entity, damaged)
                + " is not what was written");
    }
}

void LibraryExamination::checkBodies() {
    const EntityDescription& entity = Schema::library()[EntityKind::note];
    std::vector<RowID> different;
    {
        Statement row = context_->reader().prepare(
            "SELECT Z_PK, ZID, ZHTML, ZPLAINTEXT FROM ZCDNOTE WHERE ZHTML IS NOT NULL");
        while (row.step() && !isStopped()) {
            if (++report_.bodies % progressInterval == 0) {
                progress("bodies", report_.bodies, report_.objects);
            }
            if (damagedNotes_.contains(row.integer(0))) continue;
            if (isAsStored(row.textView(2), row.textView(3))) continue;
            different.push_back({row.integer(0), Uuid::fromBytes(row.blob(1))});
        }
    }
    for (const RowID& row : different) {
        const bool isRewritten = repairs() && rewriteBody(row);
        add(Kind::bodyNotCanonical,
            "The body of the " + nameOf(entity, row) + " was not in its stored form",
            isRewritten ? "it was rewritten, and a revision keeps what it was" : "");
    }
}

bool LibraryExamination::rewriteBody(const RowID& row) {
    const NoteService service(clock_);
    CDNote* note = row.id ? context_->find<CDNote>(*row.id) : nullptr;
    if (note == nullptr || note->key() != row.key) return false;
    // Whatever the time since the last one: this revision is the only copy.
    if (!service.takeRevision(*context_, *note, NoteRevisionReason::preEdit)) {
        service.takeRevision(*context_, *note, NoteRevisionReason::autosave);
    }
    service.updateNote(*context_, *note, {.html = note->html});
    context_->save();
    return true;
}

}  // namespace tesserine
