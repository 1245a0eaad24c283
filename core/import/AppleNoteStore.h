#pragma once

#include "base/Encoding.h"
#include "base/Instant.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "base/UserError.h"

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tesserine {

/// Why a store of Apple Notes, or a note of it, cannot be imported.
class AppleNotesError final : public UserError {
public:
    enum class Kind { unknownLayout, damagedText };

    static AppleNotesError unknownLayout(const std::string& file) {
        return {
            Kind::unknownLayout,
            "“" + file
                + "” is no store of Apple Notes, or one of a version that is not known; nothing was "
                  "imported."};
    }
    static AppleNotesError damagedText() {
        return {Kind::damagedText, "The text of the note is damaged in the store."};
    }
    Kind kind() const noexcept { return kind_; }

private:
    AppleNotesError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

/// A note of the store, without its text.
struct AppleNote {
    std::int64_t key = 0;
    std::string identifier{};
    std::string title{};
    std::optional<Instant> createdAt{};
    std::optional<Instant> updatedAt{};
    std::vector<std::string> folder{};  ///< names from the top
    bool isPinned = false;
    bool isLocked = false;
};

/// What stands in a note besides text.
struct AppleAttachment {
    std::string type{};  ///< such as "public.jpeg" or "com.apple.notes.table"
    std::string title{};
    std::string text{};  ///< of a tag, a mention or a link that stands in the line
    std::string address{};
    std::string target{};    ///< the address of a note that a link leads to
    std::string media{};     ///< identifier of its file; may be empty
    std::string filename{};  ///< of that file
    Bytes table{};           ///< the compressed content of a table
};

/// Reads `NoteStore.sqlite`: a private copy of it and of its write-ahead log, so that the original
/// is never opened as a database. Names of tables and columns differ between versions: only those
/// that are there are asked for. Not synchronised.
class AppleNoteStore {
public:
    /// Throws `AppleNotesError`, `FileError` and `SQLiteDatabase::Error`.
    explicit AppleNoteStore(const std::filesystem::path& file);

    /// The notes outside the folder of deleted ones, oldest first.
    const std::vector<AppleNote>& notes() const { return notes_; }
    /// The compressed text of a note; empty when there is none. Throws `SQLiteDatabase::Error`.
    Bytes text(const AppleNote& note);
    /// None when there is none of this identifier. Throws `SQLiteDatabase::Error`.
    std::optional<AppleAttachment> attachment(const std::string& identifier);

private:
    /// A folder of its own under the system's temporary one, gone with the object.
    class PrivateCopy {
    public:
        explicit PrivateCopy(const std::filesystem::path& file);
        PrivateCopy(const PrivateCopy&) = delete;
        PrivateCopy& operator=(const PrivateCopy&) = delete;
        ~PrivateCopy();
        std::filesystem::path file() const { return folder_ / "NoteStore.sqlite"; }

    private:
        std::filesystem::path folder_;
    };
    struct Folder {
        std::string name;
        std::optional<std::int64_t> parent;
        bool isTrash = false;
    };
    using Names = std::initializer_list<std::string_view>;

    void readColumns();
    void readKinds();
    void readFolders();
    void readNotes();
    void readAttachments();
    std::optional<std::vector<std::string>> pathOf(std::optional<std::int64_t> folder) const;
    bool has(Names columns) const;
    std::string value(Names columns) const;
    std::int64_t kind(const std::string& name) const;

    const std::string name_;
    const PrivateCopy copy_;
    std::unique_ptr<SQLiteDatabase> database_;
    std::set<std::string, std::less<>> columns_;      // of the table of objects
    std::set<std::string, std::less<>> dataColumns_;  // of the table of texts
    std::map<std::string, std::int64_t> kinds_;
    std::map<std::int64_t, Folder> folders_;
    std::vector<AppleNote> notes_;
    std::unordered_map<std::string, std::int64_t> attachments_;  // by identifier
};

}  // namespace tesserine
