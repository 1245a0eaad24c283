#include "search/IndexComparison.h"

#include "search/IndexMeta.h"
#include "search/IndexUpdater.h"

#include <array>
#include <unordered_map>
#include <utility>

namespace tesserine {
namespace {

struct IndexedState {
    bool isTask = false;
    std::string signature;
};

/// What the index holds, by identity; uids that are none go to `strange`.
std::unordered_map<Uuid, IndexedState> indexedStates(
    SearchIndex& index, std::vector<std::string>& strange) {
    std::unordered_map<Uuid, IndexedState> states;
    index.visitEntries([&](const SearchIndex::Entry& entry) {
        const auto id = Uuid::parse(entry.uid);
        if (id && id->text() == entry.uid) {
            const bool isTask = entry.kind == nameOf(SearchKind::task);
            states.insert_or_assign(*id, IndexedState{isTask, std::string(entry.signature)});
        } else {
            strange.emplace_back(entry.uid);
        }
    });
    return states;
}

void countInLibrary(IndexCoverage& coverage, const DocumentReader::Entry& entry) {
    ++(entry.key.kind == SearchKind::task ? coverage.tasks : coverage.notes);
    coverage.attachments += static_cast<std::int64_t>(entry.state.attachmentCount);
    coverage.attachmentsWithText += static_cast<std::int64_t>(entry.state.attachmentsWithText);
}

void readIndex(SearchIndex& index, IndexCoverage& coverage) {
    const SearchIndex::Counts counts = index.counts();
    coverage.indexedNotes = counts.notes;
    coverage.indexedTasks = counts.tasks;
    coverage.indexedAttachments = counts.attachments;
    coverage.indexedAttachmentsWithText = counts.attachmentsWithText;
    const IndexMeta meta(index);
    coverage.schemaVersion = meta.schemaVersion();
    coverage.lastRepair = meta.lastRepair();
    coverage.lastFullRebuild = meta.lastFullRebuild();
    coverage.interruptedRebuild = meta.isRebuildUnfinished();
}

}  // namespace

IndexDifferences compare(SearchIndex& index, DocumentReader& reader) {
    IndexDifferences result;
    IndexCoverage& coverage = result.coverage;
    auto indexed = indexedStates(index, result.leftover);
    reader.visitEntries([&](const DocumentReader::Entry& entry) {
        countInLibrary(coverage, entry);
        const auto found = indexed.find(entry.id);
        const bool isTask = entry.key.kind == SearchKind::task;
        if (found == indexed.end()) {
            ++coverage.missing;
        } else if (
            found->second.isTask != isTask || found->second.signature != signature(entry.state)) {
            ++coverage.stale;
            indexed.erase(found);
        } else {
            indexed.erase(found);
            return;
        }
        result.toWrite.documents.emplace(entry.key, entry.id);
    });
    for (const auto& [id, state] : indexed) {
        result.leftover.push_back(id.text());
    }
    coverage.orphaned = static_cast<std::int64_t>(result.leftover.size());
    readIndex(index, coverage);
    return result;
}

bool isSound(SearchIndex& index) {
    // The tables `…_docsize` hold the row numbers of the full-text tables.
    constexpr std::array<const char*, 5> strays = {
        "SELECT EXISTS (SELECT rowid FROM docs EXCEPT SELECT id FROM fts_docsize);",
        "SELECT EXISTS (SELECT id FROM fts_docsize EXCEPT SELECT rowid FROM docs);",
        "SELECT EXISTS (SELECT rowid FROM atts EXCEPT SELECT id FROM afts_docsize);",
        "SELECT EXISTS (SELECT id FROM afts_docsize EXCEPT SELECT rowid FROM atts);",
        "SELECT EXISTS (SELECT note_uid FROM atts EXCEPT SELECT uid FROM docs);",
    };
    return index.perform([&](SQLiteDatabase& database) {
        if (database.text("PRAGMA quick_check(1);") != "ok") return false;
        for (const char* stray : strays) {
            if (database.integer(stray) != 0) return false;
        }
        try {
            database.execute("INSERT INTO fts(fts) VALUES('integrity-check');");
            database.execute("INSERT INTO afts(afts) VALUES('integrity-check');");
            return true;
        } catch (const SQLiteDatabase::Error& error) {
            if (!isUnusable(error)) throw;
            return false;
        }
    });
}

}  // namespace tesserine
