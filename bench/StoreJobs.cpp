#include "bench/StoreJobs.h"

#include "bench/SampleLibrary.h"
#include "core/model/NoteEntities.h"

#include <algorithm>
#include <array>

namespace tesserine::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t firstPage = 200;

/// The columns that a list of notes shows, in the order of `HeaderRow`.
constexpr const char* headerColumns =
    "Z_PK, Z_OPT, ZID, ZTITLE, ZCREATEDAT, ZUPDATEDAT, ZISPINNED, ZTRASHEDAT, ZHASCONFLICT, "
    "ZCONTENTVERSION, ZREMINDERAT, ZISTEMPLATE, ZFAVORITEDAT, ZNOTEBOOK";

/// The least that any program keeps of a row of a list.
struct HeaderRow {
    std::int64_t key;
    Uuid id;
    std::string title;
    Instant createdAt;
    Instant updatedAt;
    bool isPinned;
    std::optional<Instant> trashedAt;
    bool hasConflict;
    std::int64_t contentVersion;
    std::optional<Instant> reminderAt;
    bool isTemplate;
    std::optional<Instant> favoritedAt;
    std::int64_t notebook;
};

std::optional<Instant> timeIn(const RawStatement& row, int column) {
    if (row.isNull(column)) return std::nullopt;
    return Instant::fromReferenceSeconds(row.real(column));
}

HeaderRow headerOf(const ListedRow& row) {
    return {
        .key = row.key(),
        .id = row.get(&CDNote::id).value_or(Uuid()),
        .title = row.get(&CDNote::title).value_or(""),
        .createdAt = row.get(&CDNote::createdAt).value_or(Instant()),
        .updatedAt = row.get(&CDNote::updatedAt).value_or(Instant()),
        .isPinned = row.get(&CDNote::isPinned).value_or(false),
        .trashedAt = row.get(&CDNote::trashedAt),
        .hasConflict = row.get(&CDNote::hasConflict).value_or(false),
        .contentVersion = row.get(&CDNote::contentVersion).value_or(0),
        .reminderAt = row.get(&CDNote::reminderAt),
        .isTemplate = row.get(&CDNote::isTemplate).value_or(false),
        .favoritedAt = row.get(&CDNote::favoritedAt),
        .notebook = row.key(&CDNote::notebook),
    };
}

std::vector<HeaderRow> readHeaders(RawStatement& rows) {
    std::vector<HeaderRow> result;
    while (rows.step()) {
        result.push_back({
            .key = rows.integer(0),
            .id = Uuid::fromBytes(rows.blob(2)).value_or(Uuid()),
            .title = std::string(rows.text(3)),
            .createdAt = Instant::fromReferenceSeconds(rows.real(4)),
            .updatedAt = Instant::fromReferenceSeconds(rows.real(5)),
            .isPinned = rows.integer(6) != 0,
            .trashedAt = timeIn(rows, 7),
            .hasConflict = rows.integer(8) != 0,
            .contentVersion = rows.integer(9),
            .reminderAt = timeIn(rows, 10),
            .isTemplate = rows.integer(11) != 0,
            .favoritedAt = timeIn(rows, 12),
            .notebook = rows.integer(13),
        });
    }
    rows.reset();
    return result;
}

FetchRequest newestNotes(std::size_t limit) {
    return {
        .predicate = {"trashedAt == nil AND isTemplate == NO"},
        .sort = {{"updatedAt", SortDescriptor::Order::descending}},
        .limit = limit,
    };
}

/// Fails loudly when the two sides did not do the same work.
void requireEqual(std::size_t raw, std::size_t ours, const char* job) {
    if (raw == ours) return;
    throw std::runtime_error(
        std::string(job) + ": " + std::to_string(raw) + " raw, " + std::to_string(ours) + " ours");
}

/// The measured libraries and notes; each job adds its rows.
class StoreJobs {
public:
    explicit StoreJobs(const StoreSample& sample)
        : sample_(sample),
          folder_(sample.folder),
          generator_(sample.noteCount),
          notes_(generator_.allNotes()) {}

    std::vector<Row> run() {
        if (isWanted("insert")) insert();
        if (isWanted("list") || isWanted("body") || isWanted("change")) {
            OurLibrary library(folder_.path() / "ours");
            library.addPlaces(generator_);
            library.addNotes(notes_);
            library.store().checkpoint();
            RawDatabase raw(library.store().file());  // the very same rows, read without the store
            if (isWanted("list")) newestHeaders(library, raw);
            if (isWanted("list")) allHeaders(library, raw);
            if (isWanted("body")) bodiesByKey(library, raw);
            if (isWanted("change")) change(library);
        }
        if (isWanted("open")) open();
        return std::move(rows_);
    }

private:
    void insert();
    void newestHeaders(OurLibrary& library, RawDatabase& raw);
    void allHeaders(OurLibrary& library, RawDatabase& raw);
    void bodiesByKey(OurLibrary& library, RawDatabase& raw);
    void change(OurLibrary& library);
    void open();

    bool isWanted(std::string_view job) const {
        return sample_.only.empty() || sample_.only == job;
    }
    double insertOurs();
    double insertRaw(RawLibrary::Records records);
    std::string counted() const { return grouped(sample_.noteCount) + " notes"; }

    StoreSample sample_;
    ScratchFolder folder_;
    NoteGenerator generator_;
    std::vector<GeneratedNote> notes_;
    std::vector<Row> rows_;
};

double StoreJobs::insertOurs() {
    const ScratchFolder folder(folder_.path() / "insert");
    OurLibrary library(folder.path());
    library.addPlaces(generator_);
    return secondsOf([&] { library.addNotes(notes_); });
}

double StoreJobs::insertRaw(RawLibrary::Records records) {
    const ScratchFolder folder(folder_.path() / "insert");
    OurLibrary pattern(folder.path() / "pattern");
    RawLibrary library(folder.path() / "raw.sqlite", pattern.store().file());
    return secondsOf([&] { library.addNotes(notes_, records); });
}

void StoreJobs::insert() {
    struct Case {
        RawLibrary::Records records;
        std::string job;
        std::optional<double> goal;
    };
    for (const auto& [records, job, goal] : {
             Case{RawLibrary::Records::notes, "insert " + counted(), 1.25},
             Case{
                 RawLibrary::Records::notesHistoryAndDigests,
                 "the same, raw with history and digests too",
                 std::nullopt},
         }) {
        const Comparison times = alternate(
            std::max<std::size_t>(3, sample_.rounds / 2),
            [&, raw = records] { return insertRaw(raw); },
            [&] { return insertOurs(); });
        const auto text = [&](double seconds) { return perSecond(notes_.size(), seconds); };
        rows_.push_back(rowOf(job, times, text, goal));
    }
}

void StoreJobs::newestHeaders(OurLibrary& library, RawDatabase& raw) {
    RawStatement rows = raw.prepare(
        std::string("SELECT ") + headerColumns
        + " FROM ZCDNOTE INDEXED BY idx_CDNote_updatedAt WHERE ZTRASHEDAT IS NULL AND "
          "IFNULL(ZISTEMPLATE, 0) = 0 ORDER BY ZUPDATEDAT DESC LIMIT "
        + std::to_string(firstPage));
    std::size_t rawCount = 0;
    std::size_t ourCount = 0;
    const Comparison times = alternate(
        sample_.rounds * 40 + 1,
        [&] { return secondsOf([&] { rawCount = readHeaders(rows).size(); }); },
        [&] {
            library.context().reset();
            return secondsOf(
                [&] { ourCount = library.context().fetch<CDNote>(newestNotes(firstPage)).size(); });
        });
    requireEqual(rawCount, ourCount, "newest headers");
    const std::string job = "newest " + std::to_string(firstPage) + " headers of " + counted();
    rows_.push_back(rowOf(job, times, milliseconds, 1.5));
}

void StoreJobs::allHeaders(OurLibrary& library, RawDatabase& raw) {
    // In a file of its own, so that the index does not help (or burden) anybody else.
    const fs::path copy = folder_.path() / "covered.sqlite";
    raw.execute("VACUUM INTO '" + copy.string() + "'");
    RawDatabase covered(copy);
    covered.execute(
        std::string("CREATE INDEX bench_headers ON ZCDNOTE (ZUPDATEDAT DESC, ZID, ZTITLE, Z_OPT, ")
        + "ZCREATEDAT, ZISPINNED, ZTRASHEDAT, ZHASCONFLICT, ZCONTENTVERSION, ZREMINDERAT, "
          "ZISTEMPLATE, ZFAVORITEDAT, ZNOTEBOOK)");
    RawStatement rows = covered.prepare(
        std::string("SELECT ") + headerColumns
        + " FROM ZCDNOTE INDEXED BY bench_headers ORDER BY ZUPDATEDAT DESC, ZID");
    FetchRequest request = newestNotes(0);
    request.predicate = {};
    std::size_t rawCount = 0;
    std::size_t ourCount = 0;
    const auto readRaw = [&] { return secondsOf([&] { rawCount = readHeaders(rows).size(); }); };
    const auto visit = [&] {
        return secondsOf([&] {
            std::vector<HeaderRow> headers;
            library.context().visitRows<CDNote>(
                request, [&](const ListedRow& row) { headers.push_back(headerOf(row)); });
            ourCount = headers.size();
        });
    };
    const auto fetch = [&] {
        library.context().reset();
        return secondsOf([&] { ourCount = library.context().fetch<CDNote>(request).size(); });
    };
    struct Case {
        const char* how;
        std::function<double()> ours;
        std::optional<double> goal;
    };
    for (const auto& [how, ours, goal] :
         {Case{"as rows", visit, 1.2}, Case{"as objects", fetch, std::nullopt}}) {
        const Comparison times = alternate(sample_.rounds * 2 + 1, readRaw, ours);
        requireEqual(rawCount, ourCount, "all headers");
        const std::string job = "all " + grouped(rawCount) + " headers without bodies, " + how;
        rows_.push_back(rowOf(job, times, milliseconds, goal));
    }
    library.context().reset();
}

void StoreJobs::bodiesByKey(OurLibrary& library, RawDatabase& raw) {
    StoreContext& context = library.context();
    const auto notes = context.fetch<CDNote>();
    RawStatement row = raw.prepare("SELECT ZHTML FROM ZCDNOTE WHERE Z_PK = ?");
    Dice dice(5);
    constexpr std::size_t reads = 1000;
    std::vector<CDNote*> wanted;
    for (std::size_t i = 0; i < reads; ++i) {
        wanted.push_back(notes[dice.below(notes.size())]);
    }
    std::ranges::sort(wanted);
    wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
    std::ranges::sort(wanted, {}, [](CDNote* note) { return note->title.get(); });

    std::size_t rawBytes = 0;
    std::size_t ourBytes = 0;
    const Comparison times = alternate(
        sample_.rounds * 2 + 1,
        [&] {
            rawBytes = 0;
            return secondsOf([&] {
                for (const CDNote* note : wanted) {
                    row.bind(1, note->key());
                    row.step();
                    rawBytes += std::string(row.text(0)).size();
                    row.reset();
                }
            });
        },
        [&] {
            ourBytes = 0;
            context.releaseLargeValues();
            return secondsOf([&] {
                for (const CDNote* note : wanted) {
                    ourBytes += note->html->size();
                }
            });
        });
    requireEqual(rawBytes, ourBytes, "bodies by key");
    const auto text = [count = static_cast<double>(wanted.size())](double seconds) {
        return microseconds(seconds / count);
    };
    rows_.push_back(rowOf("a body by key", times, text));
    context.reset();
}

/// Title, body, plain text and two stamps of one note, and the commit that makes them safe.
void StoreJobs::change(OurLibrary& library) {
    const fs::path file = folder_.path() / "changed.sqlite";
    RawLibrary raw(file, library.store().file());
    raw.addNotes(notes_);
    RawStatement update = raw.database().prepare(
        "UPDATE ZCDNOTE SET ZTITLE = ?, ZHTML = ?, ZPLAINTEXT = ?, ZUPDATEDAT = ?, ZCONTENTVERSION = "
        "ZCONTENTVERSION + 1, Z_OPT = Z_OPT + 1 WHERE Z_PK = ?");
    StoreContext& context = library.context();
    const auto notes = context.fetch<CDNote>();
    const auto now = SystemClock().now();

    std::vector<double> rawTimes;
    std::vector<double> ourTimes;
    Dice dice(6);
    for (std::size_t i = 0; i < sample_.rounds * 100; ++i) {
        CDNote& note = *notes[dice.below(notes.size())];
        const GeneratedNote& from = notes_[dice.below(notes_.size())];
        rawTimes.push_back(secondsOf([&] {
            raw.database().execute("BEGIN IMMEDIATE");
            update.bind(1, from.title);
            update.bind(2, from.html);
            update.bind(3, from.plainText);
            update.bind(4, now.referenceSeconds());
            update.bind(5, note.key());
            update.run();
            raw.database().execute("COMMIT");
        }));
        ourTimes.push_back(secondsOf([&] {
            note.title = from.title;
            note.html = from.html;
            note.plainText = from.plainText;
            note.updatedAt = now;
            note.contentVersion = *note.contentVersion + 1;
            context.save();
        }));
    }
    struct Case {
        const char* name;
        double share;
        std::optional<double> goal;
    };
    for (const auto& [name, share, goal] :
         {Case{"p50", 0.5, 1.2}, Case{"p99", 0.99, std::nullopt}}) {
        Comparison times{.raw = quantile(rawTimes, share), .ours = quantile(ourTimes, share)};
        times.ratio = times.ours / times.raw;
        const std::string job = std::string("one note changed and saved, ") + name;
        rows_.push_back(rowOf(job, times, milliseconds, goal));
    }
    context.reset();
}

/// Libraries of growing size, so that one can see that their size does not matter.
void StoreJobs::open() {
    std::vector<std::size_t> sizes{1000, 10'000};
    std::erase_if(sizes, [&](std::size_t size) { return size >= notes_.size(); });
    sizes.push_back(notes_.size());
    for (const std::size_t size : sizes) {
        const fs::path folder = folder_.path() / ("open-" + std::to_string(size));
        fs::path file;
        {
            OurLibrary library(folder);
            library.addPlaces(generator_);
            library.addNotes(std::span(notes_).first(size));
            file = library.store().file();
        }
        const std::string list =
            std::string("SELECT ") + headerColumns
            + " FROM ZCDNOTE INDEXED BY idx_CDNote_updatedAt WHERE ZTRASHEDAT IS NULL AND "
              "IFNULL(ZISTEMPLATE, 0) = 0 ORDER BY ZUPDATEDAT DESC LIMIT "
            + std::to_string(firstPage);
        const Comparison times = alternate(
            sample_.rounds * 4 + 1,
            [&] {
                std::unique_ptr<RawDatabase> raw;
                return secondsOf([&] {
                    raw = std::make_unique<RawDatabase>(file);
                    RawStatement rows = raw->prepare(list);
                    readHeaders(rows);
                });
            },
            [&] {
                std::unique_ptr<OurLibrary> library;
                return secondsOf([&] {
                    library = std::make_unique<OurLibrary>(folder);
                    library->context().fetch<CDNote>(newestNotes(firstPage));
                });
            });
        Row row = rowOf("open " + grouped(size) + " notes, first list", times, milliseconds);
        row.goal = "≤ 5 ms";
        row.isReached = times.ours <= 0.005;
        rows_.push_back(row);
    }
}

}  // namespace

std::vector<Row> storeJobs(const StoreSample& sample) { return StoreJobs(sample).run(); }

}  // namespace tesserine::bench
