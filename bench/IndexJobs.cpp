#include "bench/IndexJobs.h"

#include "bench/SampleLibrary.h"
#include "core/model/NoteEntities.h"
#include "search/DocumentReader.h"
#include "search/SearchAnalyzer.h"
#include "search/SearchCoordinator.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <stdexcept>

namespace tesserine::bench {
namespace {

/// From this many notes on a larger cache than SQLite's own is expected to pay.
constexpr std::size_t largeLibrary = 100'000;
constexpr double wantedIndexBytesPerSecond = 0.8e9;

std::string joined(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : separator) + word;
    }
    return text;
}

/// The texts of one document as they are stored, worked out beforehand.
struct RawDocument {
    IndexDocument document;
    std::string uid;
    std::string tags;
    std::string tagWords;
    std::string titleFold;
    std::string notebookFold;
    std::string tagsFold;
    std::string signature;
    std::string keys;

    explicit RawDocument(IndexDocument from)
        : document(std::move(from)),
          uid(document.id.text()),
          tags(joined(document.tags, "\x1F")),
          tagWords(joined(document.tags, " ")),
          titleFold(indexFold(document.title)),
          notebookFold(indexFold(document.notebook)),
          tagsFold(indexFold(tags)),
          signature(tesserine::signature(stateOf(document))),
          keys(SearchAnalyzer::keyText({{document.title, document.body}})) {}
};

/// An index of notes without attachments, written by SQLite alone with statements that stay
/// prepared.
class RawIndex {
public:
    explicit RawIndex(const std::filesystem::path& file)
        : database_(made(file)),
          row_(database_.prepare(
              "INSERT INTO docs(uid, kind, title, notebook, tags, created, updated, trashed, "
              "title_fold, notebook_fold, tags_fold, sig) "
              "VALUES(?, 'note', ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")),
          words_(database_.prepare(
              "INSERT INTO fts(rowid, title, body, tags, notebook, "
              "attachments, keys) VALUES(last_insert_rowid(), ?, ?, ?, ?, '', ?)")),
          find_(database_.prepare("SELECT rowid FROM docs WHERE uid = ?")),
          deleteWords_(database_.prepare("DELETE FROM fts WHERE rowid = ?")),
          deleteRow_(database_.prepare("DELETE FROM docs WHERE rowid = ?")) {}

    void fill(const std::vector<RawDocument>& documents) {
        database_.execute("BEGIN IMMEDIATE");
        for (const RawDocument& document : documents) {
            insert(document);
        }
        database_.execute("COMMIT");
    }
    void replace(const RawDocument& document) {
        database_.execute("BEGIN IMMEDIATE");
        find_.bind(1, document.uid);
        const std::int64_t row = find_.step() ? find_.integer(0) : 0;
        find_.reset();
        for (RawStatement* statement : {&deleteWords_, &deleteRow_}) {
            statement->bind(1, row);
            statement->run();
        }
        insert(document);
        database_.execute("COMMIT");
    }

private:
    /// The tables are ours to the letter.
    static RawDatabase made(const std::filesystem::path& file) {
        { const SearchIndex index(file); }
        return RawDatabase(file, RawDatabase::Settings::ordinary);
    }
    void insert(const RawDocument& from) {
        row_.bind(1, from.uid);
        row_.bind(2, from.document.title);
        row_.bind(3, from.document.notebook);
        row_.bind(4, from.tags);
        row_.bind(5, from.document.createdAt ? from.document.createdAt->seconds() : 0.0);
        row_.bind(6, from.document.updatedAt ? from.document.updatedAt->seconds() : 0.0);
        row_.bind(7, std::int64_t{from.document.isTrashed});
        row_.bind(8, from.titleFold);
        row_.bind(9, from.notebookFold);
        row_.bind(10, from.tagsFold);
        row_.bind(11, from.signature);
        row_.run();
        words_.bind(1, from.document.title);
        words_.bind(2, from.document.body);
        words_.bind(3, from.tagWords);
        words_.bind(4, from.document.notebook);
        words_.bind(5, from.keys);
        words_.run();
    }

    RawDatabase database_;
    RawStatement row_;
    RawStatement words_;
    RawStatement find_;
    RawStatement deleteWords_;
    RawStatement deleteRow_;
};

class IndexJobs {
public:
    IndexJobs(const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds)
        : rounds_(rounds), folder_(folder), library_(folder_.path() / "library") {
        const NoteGenerator generator(noteCount);
        notes_ = generator.allNotes();
        library_.addPlaces(generator);
        library_.addNotes(notes_);
        DocumentReader reader(library_.context().reader());
        for (const DocumentKey& key : reader.allKeys()) {
            documents_.emplace_back(*reader.document(key));
        }
    }

    std::vector<Row> run() {
        analyze();
        rebuild();
        changeOne();
        return std::move(rows_);
    }

private:
    void analyze();
    void rebuild();
    void changeOne();

    std::size_t rounds_;
    ScratchFolder folder_;
    OurLibrary library_;
    std::vector<GeneratedNote> notes_;
    std::vector<RawDocument> documents_;
    SystemClock clock_;
    std::vector<Row> rows_;
};

void IndexJobs::analyze() {
    std::size_t byteCount = 0;
    for (const RawDocument& document : documents_) {
        byteCount += document.document.body.size();
    }
    std::uint64_t sum = 0;
    std::size_t keyBytes = 0;
    const Comparison times = alternate(
        rounds_ * 2 + 1,
        [&] {
            return secondsOf([&] {
                for (const RawDocument& document : documents_) {
                    for (const char c : document.document.body) {
                        sum += static_cast<unsigned char>(c);
                    }
                }
            });
        },
        [&] {
            return secondsOf([&] {
                for (const RawDocument& document : documents_) {
                    keyBytes += SearchAnalyzer::keyText({{document.document.body}}).size();
                }
            });
        });
    if (sum == 0 || keyBytes == 0) throw std::runtime_error("nothing was read");
    const auto text = [&](double seconds) { return megabytesPerSecond(byteCount, seconds); };
    Row row = rowOf("dates and amounts in text, beside one pass over it", times, text);
    row.goal = "≥ 800 MB/s";
    row.isReached = static_cast<double>(byteCount) / times.ours >= wantedIndexBytesPerSecond;
    rows_.push_back(row);
}

void IndexJobs::rebuild() {
    SearchCoordinator coordinator(library_.store(), {.clock = clock_});
    const Comparison times = alternate(
        std::max<std::size_t>(3, rounds_ / 2),
        [&] {
            const ScratchFolder folder(folder_.path() / "raw");
            RawIndex raw(folder.path() / SearchIndex::fileName);
            return secondsOf([&] { raw.fill(documents_); });
        },
        [&] { return secondsOf([&] { coordinator.rebuild(); }); });
    if (!coordinator.coverage().isHealthy()) throw std::runtime_error("the index is not whole");
    const auto text = [&](double seconds) { return perSecond(documents_.size(), seconds); };
    const double goal = documents_.size() < largeLibrary ? 1.10 : 0.75;
    rows_.push_back(
        rowOf("rebuild the index of " + grouped(documents_.size()) + " notes", times, text, goal));
}

/// Title, body and stamp of one note saved, and found by the next search.
void IndexJobs::changeOne() {
    const ScratchFolder folder(folder_.path() / "raw");
    RawLibrary rawLibrary(folder.path() / "raw.sqlite", library_.store().file());
    rawLibrary.addNotes(notes_);
    RawStatement update = rawLibrary.database().prepare(
        "UPDATE ZCDNOTE SET ZTITLE = ?, ZHTML = ?, ZPLAINTEXT = ?, ZUPDATEDAT = ? WHERE Z_PK = ?");
    RawIndex rawIndex(folder.path() / SearchIndex::fileName);
    rawIndex.fill(documents_);
    SearchCoordinator coordinator(library_.store(), {.clock = clock_});
    coordinator.catchUp();
    StoreContext& context = library_.context();
    const auto notes = context.fetch<CDNote>();

    std::vector<double> rawTimes;
    std::vector<double> ourTimes;
    std::vector<double> idleTimes;
    Dice dice(7);
    for (std::size_t i = 0; i < rounds_ * 100; ++i) {
        CDNote& note = *notes[dice.below(notes.size())];
        const GeneratedNote& from = notes_[dice.below(notes_.size())];
        RawDocument changed = documents_[dice.below(documents_.size())];
        changed.document.body = from.plainText;
        const Instant now = clock_.now();
        rawTimes.push_back(secondsOf([&] {
            rawLibrary.database().execute("BEGIN IMMEDIATE");
            update.bind(1, from.title);
            update.bind(2, from.html);
            update.bind(3, from.plainText);
            update.bind(4, now.referenceSeconds());
            update.bind(5, note.key());
            update.run();
            rawLibrary.database().execute("COMMIT");
            rawIndex.replace(changed);
        }));
        ourTimes.push_back(secondsOf([&] {
            note.title = from.title;
            note.html = from.html;
            note.plainText = from.plainText;
            note.updatedAt = now;
            context.save();
            coordinator.catchUp();
        }));
        // What a window does between two changes; SQLite does it within a commit.
        idleTimes.push_back(secondsOf([&] { coordinator.tidyUp(); }));
    }
    struct Case {
        const char* name;
        double share;
        double goal;
    };
    for (const auto& [name, share, goal] : {Case{"p50", 0.5, 1.2}, Case{"p99", 0.99, 0.5}}) {
        Comparison times{.raw = quantile(rawTimes, share), .ours = quantile(ourTimes, share)};
        times.ratio = times.ours / times.raw;
        rows_.push_back(rowOf(
            std::string("one note changed, saved and indexed, ") + name,
            times,
            milliseconds,
            goal));
    }
    const double idleTime = std::accumulate(idleTimes.begin(), idleTimes.end(), 0.0);
    rows_.push_back(
        {.job = "put off until nobody waits, for each of these changes",
         .raw = "–",
         .ours = milliseconds(idleTime / static_cast<double>(idleTimes.size()))});
}

}  // namespace

std::vector<Row> indexJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds) {
    return IndexJobs(folder, noteCount, rounds).run();
}

}  // namespace tesserine::bench
