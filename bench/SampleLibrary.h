#pragma once

#include "base/Clock.h"
#include "base/Random.h"
#include "bench/NoteGenerator.h"
#include "bench/RawDatabase.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tesserine::bench {

/// Notes are written in groups of this many, each group in one transaction.
inline constexpr std::size_t notesPerSave = 2000;

/// A folder that is empty when made and gone afterwards.
class ScratchFolder {
public:
    explicit ScratchFolder(std::filesystem::path path);
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// A library of ours, written through the store as an importer would.
class OurLibrary {
public:
    /// Opens the library in `folder`, or makes one.
    explicit OurLibrary(const std::filesystem::path& folder);

    /// Makes the notebooks and tags; the notes need them.
    void addPlaces(const NoteGenerator& generator);
    /// Writes the notes, without their attachments; the library holds the places only.
    void addNotes(std::span<const GeneratedNote> notes);

    TesserineStore& store() { return store_; }
    StoreContext& context() { return store_.viewContext(); }

private:
    SystemClock clock_;
    SecureRandom random_;
    TesserineStore store_;
};

/// Makes a library of so many notes, with its search index complete.
void makeIndexedLibrary(const std::filesystem::path& folder, std::size_t notes);

/// The note table of a library of ours, with its indexes and its table of tags, in a file of its
/// own that SQLite alone writes to.
class RawLibrary {
public:
    /// `pattern`: a library whose tables are taken as they are there.
    RawLibrary(const std::filesystem::path& file, const std::filesystem::path& pattern);

    enum class Records { notes, notesHistoryAndDigests };
    void addNotes(std::span<const GeneratedNote> notes, Records records = Records::notes);
    RawDatabase& database() { return database_; }

private:
    void addHistory(std::int64_t number, std::span<const GeneratedNote> notes, std::int64_t first);

    RawDatabase database_;
};

}  // namespace tesserine::bench
