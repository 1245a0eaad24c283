#include "bench/SampleLibrary.h"

#include "base/Digest.h"
#include "core/model/NoteEntities.h"
#include "search/SearchCoordinator.h"

namespace tesserine::bench {
namespace {

std::span<const GeneratedNote> groupAt(std::span<const GeneratedNote> notes, std::size_t first) {
    return notes.subspan(first, std::min(notesPerSave, notes.size() - first));
}

void fill(CDNote& note, const GeneratedNote& from) {
    note.id = from.id;
    note.title = from.title;
    note.html = from.html;
    note.plainText = from.plainText;
    note.createdAt = from.createdAt;
    note.updatedAt = from.updatedAt;
    note.trashedAt = from.trashedAt;
    note.sourceURL = from.sourceURL;
    note.isPinned = from.isPinned;
}

void bindTime(RawStatement& row, int place, const std::optional<Instant>& time) {
    if (time) {
        row.bind(place, time->referenceSeconds());
    } else {
        row.bindNull(place);
    }
}

void bindNote(RawStatement& row, std::int64_t key, const GeneratedNote& note) {
    row.bind(1, key);
    row.bind(2, std::span<const std::uint8_t>(note.id.bytes()));
    row.bind(3, note.title);
    bindTime(row, 4, note.createdAt);
    bindTime(row, 5, note.updatedAt);
    bindTime(row, 6, note.trashedAt);
    row.bind(7, std::int64_t{note.isPinned});
    row.bindNull(8);
    if (note.sourceURL) row.bind(8, *note.sourceURL);
    row.bindNull(9);
    if (note.notebook) row.bind(9, static_cast<std::int64_t>(*note.notebook) + 1);
    row.bind(10, note.html);
    row.bind(11, note.plainText);
}

}  // namespace

ScratchFolder::ScratchFolder(std::filesystem::path path) : path_(std::move(path)) {
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

OurLibrary::OurLibrary(const std::filesystem::path& folder)
    : store_({.directory = folder}, {.clock = clock_, .random = random_}) {}

void OurLibrary::addPlaces(const NoteGenerator& generator) {
    const auto context = store_.newBackgroundContext();
    const Instant now = clock_.now();
    std::vector<CDNotebook*> notebooks;
    for (const GeneratedNotebook& from : generator.notebooks()) {
        auto& notebook = context->insert<CDNotebook>();
        notebook.name = from.name;
        notebook.createdAt = now;
        notebook.updatedAt = now;
        if (from.parent) notebook.parent = notebooks[*from.parent];
        notebooks.push_back(&notebook);
    }
    for (const std::string& name : generator.tags()) {
        auto& tag = context->insert<CDTag>();
        tag.name = name;
        tag.createdAt = now;
        tag.updatedAt = now;
    }
    context->save();
}

void OurLibrary::addNotes(std::span<const GeneratedNote> notes) {
    const auto context = store_.newBackgroundContext();
    for (std::size_t first = 0; first < notes.size(); first += notesPerSave) {
        const auto notebooks = context->fetch<CDNotebook>();
        const auto tags = context->fetch<CDTag>();
        for (const GeneratedNote& from : groupAt(notes, first)) {
            auto& note = context->insert<CDNote>();
            fill(note, from);
            if (from.notebook) note.notebook = notebooks[*from.notebook];
            for (const std::size_t tag : from.tags) {
                note.tags.add(*tags[tag]);
            }
        }
        context->save();
        context->reset();
    }
}

void makeIndexedLibrary(const std::filesystem::path& folder, std::size_t notes) {
    const NoteGenerator generator(notes, 1);
    OurLibrary library(folder);
    library.addPlaces(generator);
    std::vector<GeneratedNote> group;
    for (std::size_t place = 0; place < notes; ++place) {
        group.push_back(generator.note(place));
        if (group.size() < notesPerSave && place + 1 < notes) continue;
        library.addNotes(group);
        group.clear();
    }
    const SystemClock clock;
    SearchCoordinator(library.store(), {.clock = clock}).catchUp();
}

RawLibrary::RawLibrary(const std::filesystem::path& file, const std::filesystem::path& pattern)
    : database_(file) {
    RawDatabase source(pattern);
    RawStatement definitions = source.prepare(
        "SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL AND tbl_name IN ('ZCDNOTE', "
        "'Z_CDNOTE_TAGS', 'Z_HISTORY', 'Z_HISTORY_CHANGE', 'Z_DIGEST') ORDER BY rowid");
    while (definitions.step()) {
        const std::string definition(definitions.text(0));
        if (!definition.starts_with("CREATE TABLE sqlite_")) database_.execute(definition);
    }
}

void RawLibrary::addNotes(std::span<const GeneratedNote> notes, Records records) {
    RawStatement row = database_.prepare(
        "INSERT INTO ZCDNOTE (Z_PK, Z_OPT, ZID, ZTITLE, ZCREATEDAT, ZUPDATEDAT, ZTRASHEDAT, ZISPINNED, "
        "ZSOURCEURL, ZNOTEBOOK, ZHTML, ZPLAINTEXT) VALUES (?, 1, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    RawStatement link = database_.prepare("INSERT INTO Z_CDNOTE_TAGS (ZNOTE, ZTAG) VALUES (?, ?)");
    std::int64_t number = 0;
    std::int64_t key = 0;
    for (std::size_t first = 0; first < notes.size(); first += notesPerSave) {
        const auto group = groupAt(notes, first);
        database_.execute("BEGIN IMMEDIATE");
        for (const GeneratedNote& note : group) {
            bindNote(row, ++key, note);
            row.run();
            for (const std::size_t tag : note.tags) {
                link.bind(1, key);
                link.bind(2, static_cast<std::int64_t>(tag) + 1);
                link.run();
            }
        }
        if (records == Records::notesHistoryAndDigests) {
            addHistory(++number, group, static_cast<std::int64_t>(first) + 1);
        }
        database_.execute("COMMIT");
    }
}

void RawLibrary::addHistory(
    std::int64_t number, std::span<const GeneratedNote> notes, std::int64_t first) {
    RawStatement transaction =
        database_.prepare("INSERT INTO Z_HISTORY (ID, TIMESTAMP, AUTHOR) VALUES (?, ?, 'bench')");
    transaction.bind(1, number);
    transaction.bind(2, 0.0);
    transaction.run();
    RawStatement change = database_.prepare(
        "INSERT INTO Z_HISTORY_CHANGE (HISTORY, ENTITY, PK, UUID, KIND, CHANGED) VALUES (?, 'CDNote', "
        "?, ?, 0, '')");
    RawStatement digest = database_.prepare(
        "INSERT INTO Z_DIGEST (ENTITY, PK, ATTRIBUTE, SHA256) VALUES ('CDNote', ?, 'html', ?)");
    std::int64_t key = first;
    for (const GeneratedNote& note : notes) {
        change.bind(1, number);
        change.bind(2, key);
        change.bind(3, std::span<const std::uint8_t>(note.id.bytes()));
        change.run();
        const auto sum = sha256(bytesOf(note.html));
        digest.bind(1, key++);
        digest.bind(2, std::span<const std::uint8_t>(sum));
        digest.run();
    }
}

}  // namespace tesserine::bench
