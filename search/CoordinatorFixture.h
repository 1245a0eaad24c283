#pragma once

#include "core/model/TaskEntities.h"
#include "core/store/StoreFixture.h"
#include "search/DocumentReader.h"
#include "search/SearchCoordinator.h"

#include <memory>
#include <string>

namespace tesserine::test {

/// Every row of a query, its cells joined by "|".
inline std::string rowsOf(SearchIndex& index, const std::string& sql) {
    return index.perform([&](SQLiteDatabase& database) {
        std::string text;
        Statement rows = database.prepare(sql);
        while (rows.step()) {
            for (int i = 0; i < rows.columnCount(); ++i) {
                text += (i == 0 ? "" : "|") + rows.text(i).value_or("NULL");
            }
            text += "\n";
        }
        return text;
    });
}

/// All that an index holds besides row numbers and what it remembers of itself; then what its
/// full-text tables say of themselves.
inline std::string dump(SearchIndex& index) {
    std::string text = rowsOf(
        index,
        "SELECT d.uid, kind, d.title, d.notebook, d.tags, types, created, updated, has_attach, "
        "trashed, latitude, longitude, favorite, favorited, title_fold, notebook_fold, tags_fold, "
        "types_fold, sig, att_count, att_text, f.title, f.body, f.tags, f.notebook, f.attachments, "
        "f.keys FROM docs d LEFT JOIN fts f ON f.rowid = d.rowid ORDER BY uid");
    text += rowsOf(
        index,
        "SELECT uid, note_uid, a.filename, mime, has_text, f.filename, body, keys FROM atts a LEFT "
        "JOIN afts f ON f.rowid = a.rowid ORDER BY uid");
    text += rowsOf(index, "SELECT count(*) FROM fts UNION ALL SELECT count(*) FROM afts");
    text += rowsOf(index, "SELECT * FROM vocab ORDER BY term");
    text += rowsOf(index, "SELECT * FROM tag_tree ORDER BY name");
    try {
        index.perform([](SQLiteDatabase& database) {
            database.execute("INSERT INTO fts(fts) VALUES('integrity-check');");
            database.execute("INSERT INTO afts(afts) VALUES('integrity-check');");
        });
    } catch (const SQLiteDatabase::Error& error) {
        text += error.what();
    }
    return text;
}

/// A library in a file, and coordinators of its index.
class CoordinatorFixture : public StoreFixture {
public:
    using Outcome = SearchCoordinator::Outcome;
    using Care = SearchCoordinator::Care;

    std::unique_ptr<SearchCoordinator> coordinate(
        TesserineStore& store, const std::string& vfs = {}) {
        return std::make_unique<SearchCoordinator>(
            store, SearchCoordinator::Setting{.clock = clock, .vfs = vfs});
    }
    /// What an index made from nothing holds.
    std::string fromScratch(TesserineStore& store) {
        const TemporaryFolder apart;
        SearchIndex index(apart / SearchIndex::fileName);
        const auto context = store.newBackgroundContext();
        DocumentReader reader(context->reader());
        for (const DocumentKey& key : reader.allKeys()) {
            index.upsert(*reader.document(key));
        }
        index.replaceTagTree(reader.tagTree());
        return dump(index);
    }
    /// Adds notes that differ, in as many notebooks and with as many tags as there are residues.
    void addNotes(StoreContext& context, int count) {
        auto& notebook = context.insert<CDNotebook>();
        notebook.name = "Notebook";
        auto& tag = context.insert<CDTag>();
        tag.name = "Tag";
        for (int i = 0; i < count; ++i) {
            CDNote& note = addNote(context, "Note " + std::to_string(i), "");
            note.plainText = "body number " + std::to_string(i) + " of 2026-03-14";
            if (i % 2 == 0) note.notebook = &notebook;
            if (i % 3 == 0) note.tags.add(tag);
            if (i % 5 == 0) addAttachment(context, note, "text of file " + std::to_string(i));
        }
        context.save();
    }
    static CDAttachment& addAttachment(
        StoreContext& context, CDNote& note, const std::string& text) {
        auto& attachment = context.insert<CDAttachment>();
        attachment.filename = "file.pdf";
        attachment.mimeType = "application/pdf";
        attachment.extractedText = text;
        attachment.note = &note;
        return attachment;
    }

    std::filesystem::path indexFile = library / SearchIndex::fileName;
};

}  // namespace tesserine::test
