#include "search/IndexComparison.h"

#include "search/IndexMeta.h"
#include "search/IndexUpdater.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>

namespace tesserine {
namespace {

/// What the index holds of one document; small, because all of them are compared at once.
struct IndexedState {
    Uuid id;
    std::size_t signatureHash = 0;
    bool isTask = false;
    bool isInLibrary = false;
};

std::size_t hashOf(std::string_view signature) { return std::hash<std::string_view>{}(signature); }

/// What the index holds, sorted by identity; uids that are none go to `strange`.
std::vector<IndexedState> indexedStates(SearchIndex& index, std::vector<std::string>& strange) {
    std::vector<IndexedState> states;
    index.visitEntries([&](const SearchIndex::Entry& entry) {
        const auto id = Uuid::parse(entry.uid);
        if (id && id->text() == entry.uid) {
            const bool isTask = entry.kind == nameOf(SearchKind::task);
            states.push_back({*id, hashOf(entry.signature), isTask});
        } else {
            strange.emplace_back(entry.uid);
        }
    });
    std::ranges::sort(states, {}, &IndexedState::id);
    return states;
}

IndexedState* find(std::vector<IndexedState>& states, const Uuid& id) {
    const auto found = std::ranges::lower_bound(states, id, {}, &IndexedState::id);
    return found == states.end() || found->id != id ? nullptr : &*found;
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
        IndexedState* const state = find(indexed, entry.id);
        if (state == nullptr) {
            ++coverage.missing;
        } else {
            state->isInLibrary = true;
            const bool isTask = entry.key.kind == SearchKind::task;
            const bool isSame =
                state->isTask == isTask && state->signatureHash == hashOf(signature(entry.state));
            if (isSame) return;
            ++coverage.stale;
        }
        result.toWrite.documents.emplace(entry.key, entry.id);
    });
    for (const IndexedState& state : indexed) {
        if (!state.isInLibrary) result.leftover.push_back(state.id.text());
    }
    coverage.orphaned = static_cast<std::int64_t>(result.leftover.size());
    readIndex(index, coverage);
    // All was read once, which is no reason to keep the last of it.
    index.perform([](SQLiteDatabase& database) { database.execute("PRAGMA shrink_memory;"); });
    reader.forgetPages();
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
