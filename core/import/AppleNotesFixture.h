#pragma once

#include "core/import/AppleNotesImporter.h"
#include "core/import/ImportFixture.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::test {

/// Writes messages in Protocol Buffers' wire format.
class ProtobufWriter {
public:
    ProtobufWriter& number(unsigned field, std::uint64_t value);
    ProtobufWriter& bytes(unsigned field, std::string_view value);
    const std::string& message() const { return message_; }

private:
    void varint(std::uint64_t value);
    std::string message_;
};

std::string gzip(std::string_view content);

/// A stretch of a note's text with its look, as `AttributeRun` has it.
struct NoteRun {
    std::string text{};
    std::optional<unsigned> style{};  ///< of the paragraph
    unsigned indent = 0;
    std::optional<bool> isDone{};  ///< of a checklist
    bool isQuote = false;
    unsigned weight = 0;
    bool isUnderlined = false;
    bool isStruck = false;
    int baseline = 0;
    std::string link{};
    std::string attachment{};  ///< identifier; the text is then U+FFFC
    std::string type{};
};

/// The message of a text with its runs.
std::string noteMessage(const std::vector<NoteRun>& runs);
/// A value of `ZICNOTEDATA.ZDATA`.
std::string noteData(const std::vector<NoteRun>& runs);
/// A value of `ZMERGEABLEDATA1` of a table; cells by rows.
std::string tableData(const std::vector<std::vector<std::string>>& cells);

struct StoredFolder {
    int key = 0;
    std::string name{};
    int parent = 0;
    int type = 0;
};
struct StoredNote {
    std::string identifier{};
    std::string title{};
    int folder = 0;
    std::string data{};
    bool isLocked = false;
    bool isPinned = false;
    bool isDeleted = false;
    double created = 700'000'000;
};
struct StoredAttachment {
    std::string identifier{};
    std::string type{};
    std::string media{};  ///< identifier of its file
    std::string filename{};
    std::string table{};
    std::string title{};
    std::string text{};
    std::string address{};
    std::string target{};
};

/// Which names the columns of a store have.
enum class StoreVersion { older, newer };

struct StoreContent {
    std::vector<StoredFolder> folders{};
    std::vector<StoredNote> notes{};
    std::vector<StoredAttachment> attachments{};
    StoreVersion version = StoreVersion::newer;
};

/// A library into which Apple Notes are imported.
class AppleNotesFixture : public ImportFixture {
public:
    /// Makes `NoteStore.sqlite` in the source folder; what is in the write-ahead log stays there.
    void makeStore(const StoreContent& content) const;
    std::filesystem::path storeFile() const { return source() / "NoteStore.sqlite"; }

    ImportReport importNotes(const ImportOptions& options = {}) {
        return importFrom(source(), options);
    }
    ImportReport importFrom(const std::filesystem::path& path, const ImportOptions& options = {}) {
        context().reset();
        const auto background = store().newBackgroundContext();
        return apple.run(*background, {path}, options);
    }

    AppleNotesImporter apple{
        {.clock = clock, .random = random, .calendar = calendar, .types = types}};
};

}  // namespace tesserine::test
