#pragma once

#include "base/sqlite/SQLiteDatabase.h"
#include "search/IndexDocument.h"
#include "search/SearchIndex.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// The row of a note or task in the library.
struct DocumentKey {
    SearchKind kind = SearchKind::note;
    std::int64_t row = 0;

    // NOLINTNEXTLINE(modernize-use-nullptr): the tool misreads a defaulted comparison
    friend auto operator<=>(const DocumentKey&, const DocumentKey&) = default;
};

/// Reads from the library's rows what is to be indexed: every note that is no template, in the
/// trash or not, and every task.
///
/// Makes no objects and never touches what is not indexed, such as bodies in HTML and file data.
/// Belongs to whoever uses its connection. Throws `StoreError` (readFailed).
class DocumentReader {
public:
    /// `library` is a connection to a library, which outlives this.
    explicit DocumentReader(SQLiteDatabase& library) : library_(library) {}

    /// The document of a row as it is now; none when the row is gone, is a template or has no
    /// identity.
    std::optional<IndexDocument> document(const DocumentKey& key);
    /// Every document, in the order of the rows, notes first.
    std::vector<DocumentKey> allKeys();
    /// The row of the document with this uid.
    std::optional<DocumentKey> keyOf(const std::string& uid);
    /// Notes of a notebook; notes and tasks with a tag; the note of an attachment.
    std::vector<DocumentKey> inNotebook(std::int64_t notebook);
    std::vector<DocumentKey> withTag(std::int64_t tag);
    std::optional<DocumentKey> withAttachment(std::int64_t attachment);
    std::vector<SearchIndex::TagParent> tagTree();

    /// Hands every document to `visit` with what its signature is made of.
    struct Entry {
        DocumentKey key;
        Uuid id;
        DocumentState state;
    };
    void visitEntries(const std::function<void(const Entry&)>& visit);

    /// Lets go of the pages of the library that were read.
    void forgetPages() { library_.execute("PRAGMA shrink_memory;"); }

private:
    std::optional<IndexDocument> note(std::int64_t key);
    std::optional<IndexDocument> task(std::int64_t key);
    std::vector<std::string> tagNames(SearchKind kind, std::int64_t key);
    void addAttachments(IndexDocument& document, std::int64_t note);
    std::vector<std::int64_t> rows(const char* sql, std::int64_t parameter);

    SQLiteDatabase& library_;
};

/// The words by which an attachment's type is searched: the extension of its type or name, and its
/// family, such as "image".
std::vector<std::string> typeWords(const std::string& mimeType, const std::string& filename);

}  // namespace tesserine
