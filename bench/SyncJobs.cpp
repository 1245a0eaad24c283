#include "bench/SyncJobs.h"

#include "base/HTTPSession.h"
#include "base/JSON.h"
#include "base/SecretStore.h"
#include "bench/SampleLibrary.h"
#include "server/HTTPFront.h"
#include "server/Service.h"
#include "sync/AccountSession.h"
#include "sync/SyncClient.h"
#include "sync/SyncEngine.h"
#include "sync/WireCoding.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace tesserine::bench {
namespace {

constexpr std::size_t recordCount = 100'000;
constexpr std::size_t recordsOfPage = 200;
constexpr std::size_t pageCount = 50;  // different ones; each is taken several times
constexpr std::size_t passes = recordCount / recordsOfPage / pageCount;
constexpr double noSyncLimit = 1e9;

// MARK: records

std::vector<ChangesResponse> makePages() {
    const NoteGenerator generator(recordsOfPage * pageCount);
    std::vector<ChangesResponse> pages(pageCount);
    for (std::size_t i = 0; i < generator.noteCount(); ++i) {
        const GeneratedNote note = generator.note(i);
        pages[i / recordsOfPage].changes.push_back(
            {.id = note.id,
             .kind = "note",
             .rev = 1,
             .seq = static_cast<std::int64_t>(i + 1),
             .payload =
                 {{"title", note.title},
                  {"html", note.html},
                  {"created_at", note.createdAt.iso()},
                  {"is_pinned", note.isPinned}},
             .updatedAt = note.updatedAt});
    }
    return pages;
}

std::vector<Row> recordJobs(std::size_t rounds) {
    const auto pages = makePages();
    std::vector<boost::json::value> values;
    std::vector<std::string> texts;
    std::size_t byteCount = 0;
    for (const ChangesResponse& page : pages) {
        values.emplace_back(wire::encode(page));
        texts.push_back(json::write(values.back()));
        byteCount += texts.back().size() * passes;
    }

    // What is made is counted, so that none of it can be left out.
    std::size_t rawCount = 0;
    std::size_t ourCount = 0;
    const auto timesOf = [&](const auto& raw, const auto& ours) {
        const auto repeated = [](std::size_t& count, const auto& work) {
            return secondsOf([&] {
                for (std::size_t i = 0; i < passes * pageCount; ++i) {
                    count += work(i % pageCount);
                }
            });
        };
        const Comparison times = alternate(
            rounds,
            [&] { return repeated(rawCount, raw); },
            [&] { return repeated(ourCount, ours); });
        if (rawCount != ourCount) throw std::runtime_error("records were lost");
        return times;
    };
    const Comparison writing = timesOf(
        [&](std::size_t i) { return boost::json::serialize(values[i]).empty() ? 0U : 1U; },
        [&](std::size_t i) { return json::write(wire::encode(pages[i])).empty() ? 0U : 1U; });
    const Comparison reading = timesOf(
        [&](std::size_t i) { return boost::json::parse(texts[i]).at("changes").as_array().size(); },
        [&](std::size_t i) { return wire::decodeText<ChangesResponse>(texts[i]).changes.size(); });
    const auto text = [&](double seconds) {
        return perSecond(recordCount, seconds) + ", " + megabytesPerSecond(byteCount, seconds);
    };
    return {
        rowOf("write 100,000 records, beside bare Boost.JSON", writing, text),
        rowOf("read 100,000 records, beside bare Boost.JSON", reading, text)};
}

// MARK: the first synchronisation

/// A service on the loopback, with an account.
class LoopbackService {
public:
    explicit LoopbackService(const std::filesystem::path& folder)
        : service_(
            {.folder = folder, .passwordRounds = 1, .perAddress = all, .perToken = all},
            {.clock = clock_, .random = random_}),
          front_(service_, {.port = 0}) {
        service_.accounts().setPassword("a@b.test", "secret");
    }

    std::string address() const { return "http://127.0.0.1:" + std::to_string(front_.port()); }
    std::string code() { return service_.accounts().signIn("a@b.test", "secret").value_or(""); }

private:
    static constexpr server::RateLimit::Allowance all{
        .perSecond = noSyncLimit, .atOnce = noSyncLimit};

    SystemClock clock_;
    SecureRandom random_;
    server::Service service_;
    server::HTTPFront front_;
};

/// A library that is signed in to the service.
class Device {
public:
    Device(const std::filesystem::path& folder, LoopbackService& service)
        : library_(folder),
          client_(service.address(), {.session = network_, .clock = clock_, .random = random_}),
          session_({.client = client_, .secrets = secrets_, .clock = clock_}),
          engine_(
              {.store = library_.store(),
               .session = session_,
               .client = client_,
               .clock = clock_,
               .random = random_}) {
        client_.setTokenSource(
            [this](const std::stop_token& stop) { return session_.validAccessToken(stop); });
        session_.completeSignIn(service.code(), "Bench");
    }

    OurLibrary& library() { return library_; }
    SyncSummary sync() { return engine_.synchronise(); }

private:
    SystemClock clock_;
    SecureRandom random_;
    InMemorySecrets secrets_;
    HTTPSession network_{{.usesProxy = false}};
    OurLibrary library_;
    SyncClient client_;
    AccountSession session_;
    SyncEngine engine_;
};

/// The records of the notes, as they are sent, in a file; returns its size.
std::size_t writeRecords(const std::filesystem::path& file, std::span<const GeneratedNote> notes) {
    std::ofstream out(file, std::ios::binary);
    for (const GeneratedNote& note : notes) {
        out << json::write(wire::encode(SyncPush{
            .id = note.id,
            .kind = "note",
            .updatedAt = note.updatedAt,
            .payload = {{"title", note.title}, {"html", note.html}}}));
    }
    out.close();
    if (!out) throw std::runtime_error("the records could not be written");
    return std::filesystem::file_size(file);
}

/// Copies the file and waits until the copy is on disk.
void copyToDisk(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
    const int file = ::open(to.c_str(), O_RDONLY | O_CLOEXEC);
    const bool isSafe = file >= 0 && ::fsync(file) == 0;
    if (file >= 0) ::close(file);
    if (!isSafe) throw std::runtime_error("the copy could not be written");
}

std::vector<Row> firstSyncJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds) {
    const ScratchFolder scratch(folder);
    const NoteGenerator generator(noteCount);
    const auto notes = generator.allNotes();
    const auto records = scratch.path() / "records";
    const std::size_t byteCount = writeRecords(records, notes);
    const auto copy = [&] {
        return secondsOf([&] { copyToDisk(records, scratch.path() / "copy"); });
    };

    const Comparison sending = alternate(rounds, copy, [&] {
        const ScratchFolder fresh(scratch.path() / "round");
        LoopbackService service(fresh.path() / "service");
        Device device(fresh.path() / "one", service);
        device.library().addPlaces(generator);
        device.library().addNotes(notes);
        std::size_t sent = 0;
        const double seconds = secondsOf([&] { sent = device.sync().sent; });
        if (sent < noteCount) throw std::runtime_error("notes were lost");
        return seconds;
    });

    LoopbackService service(scratch.path() / "service");
    Device first(scratch.path() / "first", service);
    first.library().addPlaces(generator);
    first.library().addNotes(notes);
    first.sync();
    const Comparison receiving = alternate(rounds, copy, [&] {
        const ScratchFolder fresh(scratch.path() / "round");
        Device device(fresh.path() / "two", service);
        std::size_t received = 0;
        const double seconds = secondsOf([&] { received = device.sync().received; });
        if (received < noteCount) throw std::runtime_error("notes were lost");
        return seconds;
    });

    const std::string what = grouped(noteCount) + " notes";
    const auto text = [&](double seconds) {
        return perSecond(noteCount, seconds) + ", " + megabytesPerSecond(byteCount, seconds);
    };
    return {
        rowOf("first sync of " + what + " to the service, beside copying them", sending, text),
        rowOf("first sync of " + what + " from the service", receiving, text)};
}

}  // namespace

std::vector<Row> syncJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds) {
    auto rows = recordJobs(rounds);
    const auto more = firstSyncJobs(folder, noteCount, rounds);
    rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}

}  // namespace tesserine::bench
