#include "search/DocumentReader.h"

#include "base/Text.h"
#include "core/store/StoreCore.h"
#include "core/store/StoreError.h"

#include <algorithm>
#include <unordered_map>

namespace tesserine {
namespace {

/// Errors of the library must not be taken for errors of the index.
template <class Read>
auto readingLibrary(Read read) {
    try {
        return read();
    } catch (const SQLiteDatabase::Error& error) {
        throw StoreError::readFailed(StoreCore::explain(error));
    }
}

std::optional<Instant> instantIn(const Statement& row, int column) {
    if (row.isNull(column)) return std::nullopt;
    return Instant::fromReferenceSeconds(row.real(column));
}

std::string textIn(const Statement& row, int column) { return row.text(column).value_or(""); }

void append(std::string& text, std::string_view separator, std::string_view part) {
    if (part.empty()) return;
    if (!text.empty()) text += separator;
    text += part;
}

constexpr const char* noteRow =
    "SELECT n.ZID, n.ZTITLE, n.ZPLAINTEXT, n.ZCREATEDAT, n.ZUPDATEDAT, n.ZTRASHEDAT, "
    "n.ZISPINNED, n.ZFAVORITEDAT, n.ZHASLOCATION, n.ZLATITUDE, n.ZLONGITUDE, b.ZNAME "
    "FROM ZCDNOTE n LEFT JOIN ZCDNOTEBOOK b ON b.Z_PK = n.ZNOTEBOOK "
    "WHERE n.Z_PK = ? AND n.ZISTEMPLATE = 0";
constexpr const char* taskRow =
    "SELECT ZID, ZTITLE, ZDETAILS, ZCREATEDAT, ZUPDATEDAT FROM ZCDTASK WHERE Z_PK = ?";
constexpr const char* noteTags =
    "SELECT ZNAME FROM Z_CDNOTE_TAGS CROSS JOIN ZCDTAG ON Z_PK = ZTAG WHERE ZNOTE = ? "
    "ORDER BY ZTAG";
constexpr const char* taskTags =
    "SELECT ZNAME FROM Z_CDTASK_LABELS CROSS JOIN ZCDTAG ON Z_PK = ZTAG WHERE ZTASK = ? "
    "ORDER BY ZTAG";
constexpr const char* attachmentRows =
    "SELECT ZID, ZFILENAME, ZMIMETYPE, ZEXTRACTEDTEXT, ZOCRTEXT FROM ZCDATTACHMENT "
    "WHERE ZNOTE = ? AND ZID IS NOT NULL ORDER BY Z_PK";
constexpr const char* noteStates =
    "SELECT Z_PK, ZID, ZUPDATEDAT, ZTRASHEDAT FROM ZCDNOTE WHERE ZISTEMPLATE = 0";
constexpr const char* taskStates = "SELECT Z_PK, ZID, ZUPDATEDAT, NULL FROM ZCDTASK";
constexpr const char* attachmentStates =
    "SELECT ZNOTE, count(*), sum(IFNULL(ZEXTRACTEDTEXT <> '', 0) OR IFNULL(ZOCRTEXT <> '', 0)) "
    "FROM ZCDATTACHMENT WHERE ZNOTE IS NOT NULL AND ZID IS NOT NULL GROUP BY ZNOTE";

}  // namespace

std::optional<IndexDocument> DocumentReader::document(const DocumentKey& key) {
    return readingLibrary([&] {
        auto found = key.kind == SearchKind::note ? note(key.row) : task(key.row);
        if (found) found->tags = tagNames(key.kind, key.row);
        if (found && key.kind == SearchKind::note) addAttachments(*found, key.row);
        return found;
    });
}

std::optional<IndexDocument> DocumentReader::note(std::int64_t key) {
    Statement& row = library_.cached(noteRow);
    row.bindInteger(1, key);
    const auto id = row.step() ? Uuid::fromBytes(row.blob(0)) : std::nullopt;
    std::optional<IndexDocument> document;
    if (id) {
        document = IndexDocument{.id = *id, .kind = SearchKind::note};
        document->title = textIn(row, 1);
        document->body = textIn(row, 2);
        document->createdAt = instantIn(row, 3);
        document->updatedAt = instantIn(row, 4);
        document->isTrashed = !row.isNull(5);
        document->favoritedAt = instantIn(row, 7);
        document->favorite = row.integer(6) != 0;
        if (row.integer(8) != 0) {
            document->latitude = row.real(9);
            document->longitude = row.real(10);
        }
        document->notebook = textIn(row, 11);
    }
    row.reset();
    return document;
}

std::optional<IndexDocument> DocumentReader::task(std::int64_t key) {
    Statement& row = library_.cached(taskRow);
    row.bindInteger(1, key);
    const auto id = row.step() ? Uuid::fromBytes(row.blob(0)) : std::nullopt;
    std::optional<IndexDocument> document;
    if (id) {
        document = IndexDocument{.id = *id, .kind = SearchKind::task};
        document->title = textIn(row, 1);
        document->body = textIn(row, 2);
        document->createdAt = instantIn(row, 3);
        document->updatedAt = instantIn(row, 4);
    }
    row.reset();
    return document;
}

std::vector<std::string> DocumentReader::tagNames(SearchKind kind, std::int64_t key) {
    Statement& row = library_.cached(kind == SearchKind::note ? noteTags : taskTags);
    row.bindInteger(1, key);
    std::vector<std::string> names;
    while (row.step()) {
        names.push_back(textIn(row, 0));
    }
    row.reset();
    std::erase(names, "");
    return names;
}

void DocumentReader::addAttachments(IndexDocument& document, std::int64_t note) {
    Statement& row = library_.cached(attachmentRows);
    row.bindInteger(1, note);
    while (row.step()) {
        IndexAttachment attachment;
        attachment.id = Uuid::fromBytes(row.blob(0)).value_or(Uuid());
        attachment.filename = textIn(row, 1);
        attachment.mimeType = textIn(row, 2);
        append(attachment.text, "\n", textIn(row, 3));
        append(attachment.text, "\n", textIn(row, 4));
        append(document.attachmentText, "\n\n", attachment.text);
        for (std::string& word : typeWords(attachment.mimeType, attachment.filename)) {
            if (std::ranges::count(document.attachmentTypes, word) > 0) continue;
            document.attachmentTypes.push_back(std::move(word));
        }
        document.attachments.push_back(std::move(attachment));
    }
    row.reset();
    document.hasAttachment = !document.attachments.empty();
}

std::vector<std::int64_t> DocumentReader::rows(const char* sql, std::int64_t parameter) {
    return readingLibrary([&] {
        Statement& row = library_.cached(sql);
        row.bindInteger(1, parameter);
        std::vector<std::int64_t> keys;
        while (row.step()) {
            keys.push_back(row.integer(0));
        }
        row.reset();
        return keys;
    });
}

std::vector<DocumentKey> DocumentReader::allKeys() {
    std::vector<DocumentKey> keys;
    visitEntries([&](const Entry& entry) { keys.push_back(entry.key); });
    std::ranges::sort(keys);
    return keys;
}

std::optional<DocumentKey> DocumentReader::keyOf(const std::string& uid) {
    const auto id = Uuid::parse(uid);
    if (!id || id->text() != uid) return std::nullopt;
    return readingLibrary([&]() -> std::optional<DocumentKey> {
        for (const SearchKind kind : {SearchKind::note, SearchKind::task}) {
            Statement& row = library_.cached(
                kind == SearchKind::note ? "SELECT Z_PK FROM ZCDNOTE WHERE ZID = ?"
                                         : "SELECT Z_PK FROM ZCDTASK WHERE ZID = ?");
            row.bindBlob(1, id->bytes());
            const bool isThere = row.step();
            const std::int64_t key = isThere ? row.integer(0) : 0;
            row.reset();
            if (isThere) return DocumentKey{kind, key};
        }
        return std::nullopt;
    });
}

std::vector<DocumentKey> DocumentReader::inNotebook(std::int64_t notebook) {
    std::vector<DocumentKey> keys;
    for (const auto row : rows("SELECT Z_PK FROM ZCDNOTE WHERE ZNOTEBOOK = ?", notebook)) {
        keys.push_back({SearchKind::note, row});
    }
    return keys;
}

std::vector<DocumentKey> DocumentReader::withTag(std::int64_t tag) {
    std::vector<DocumentKey> keys;
    for (const auto row : rows("SELECT ZNOTE FROM Z_CDNOTE_TAGS WHERE ZTAG = ?", tag)) {
        keys.push_back({SearchKind::note, row});
    }
    for (const auto row : rows("SELECT ZTASK FROM Z_CDTASK_LABELS WHERE ZTAG = ?", tag)) {
        keys.push_back({SearchKind::task, row});
    }
    return keys;
}

std::optional<DocumentKey> DocumentReader::withAttachment(std::int64_t attachment) {
    const auto notes =
        rows("SELECT ZNOTE FROM ZCDATTACHMENT WHERE Z_PK = ? AND ZNOTE IS NOT NULL", attachment);
    if (notes.empty()) return std::nullopt;
    return DocumentKey{SearchKind::note, notes.front()};
}

std::vector<SearchIndex::TagParent> DocumentReader::tagTree() {
    return readingLibrary([&] {
        std::vector<SearchIndex::TagParent> tags;
        Statement row = library_.prepare(
            "SELECT t.ZNAME, p.ZNAME FROM ZCDTAG t LEFT JOIN ZCDTAG p ON p.Z_PK = t.ZPARENT "
            "WHERE t.ZNAME <> '' ORDER BY t.Z_PK");
        while (row.step()) {
            tags.push_back({textIn(row, 0), row.text(1)});
        }
        return tags;
    });
}

void DocumentReader::visitEntries(const std::function<void(const Entry&)>& visit) {
    readingLibrary([&] {
        std::unordered_map<std::int64_t, DocumentState> files;
        Statement attachments = library_.prepare(attachmentStates);
        while (attachments.step()) {
            DocumentState& state = files[attachments.integer(0)];
            state.attachmentCount = static_cast<std::size_t>(attachments.integer(1));
            state.attachmentsWithText = static_cast<std::size_t>(attachments.integer(2));
        }
        for (const SearchKind kind : {SearchKind::note, SearchKind::task}) {
            const bool isNote = kind == SearchKind::note;
            Statement row = library_.prepare(isNote ? noteStates : taskStates);
            while (row.step()) {
                const auto id = Uuid::fromBytes(row.blob(1));
                if (!id) continue;
                const std::int64_t key = row.integer(0);
                const auto found = isNote ? files.find(key) : files.end();
                DocumentState state = found == files.end() ? DocumentState{} : found->second;
                state.updatedAt = instantIn(row, 2);
                state.isTrashed = !row.isNull(3);
                visit({{kind, key}, *id, state});
            }
        }
    });
}

}  // namespace tesserine
