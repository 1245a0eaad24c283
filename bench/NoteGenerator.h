#pragma once

#include "base/Encoding.h"
#include "base/Instant.h"
#include "base/Uuid.h"
#include "bench/Dice.h"
#include "bench/Vocabulary.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine::bench {

struct GeneratedNotebook {
    std::string name;
    std::optional<std::size_t> parent;  ///< its place in the list, before this one's
};

/// A file of a made-up note. Its bytes are noise and are made when asked for.
struct GeneratedAttachment {
    Uuid id;
    std::string filename;
    std::string type;
    std::size_t byteCount = 0;
    std::uint64_t seed = 0;

    Bytes data() const;
};

struct GeneratedNote {
    Uuid id;
    std::string title;
    std::string html;       ///< in the form in which the library stores bodies
    std::string plainText;  ///< of `html`
    Instant createdAt;
    Instant updatedAt;  ///< not before `createdAt`
    std::optional<Instant> trashedAt;
    std::optional<std::string> sourceURL;
    bool isPinned = false;
    std::optional<std::size_t> notebook;  ///< its place among the notebooks
    std::vector<std::size_t> tags;        ///< places among the tags, ascending, each once
    std::vector<GeneratedAttachment> attachments;
};

/// Makes up a library of notes like real ones: a median of 1 KB of plain text and an average of
/// about 1.8 KB, headings, paragraphs, lists, checklists, tables, links to the web and to each
/// other, in a tree of notebooks, with tags, over ten years.
///
/// The same seed and count give the same library on every machine. Immutable: each note can be made
/// alone and from any thread.
class NoteGenerator {
public:
    explicit NoteGenerator(std::size_t noteCount, std::uint64_t seed = 1);

    std::size_t noteCount() const { return noteCount_; }
    const std::vector<GeneratedNotebook>& notebooks() const { return notebooks_; }
    const std::vector<std::string>& tags() const { return tags_; }
    /// The note at a place below `noteCount`.
    GeneratedNote note(std::size_t place) const;
    Uuid noteID(std::size_t place) const;
    std::vector<GeneratedNote> allNotes() const;

private:
    void makeNotebooks();
    void makeTags();
    std::string makeTitle(Dice& dice) const;
    void placeInTime(Dice& dice, GeneratedNote& note) const;
    void placeInLibrary(Dice& dice, GeneratedNote& note) const;
    void attach(Dice& dice, GeneratedNote& note) const;

    std::uint64_t seed_;
    std::size_t noteCount_;
    Vocabulary vocabulary_;
    std::vector<GeneratedNotebook> notebooks_;
    std::vector<std::string> tags_;
};

}  // namespace tesserine::bench
