#include "bench/ServiceJobs.h"

#include "base/Clock.h"
#include "base/HTTPSession.h"
#include "base/JSON.h"
#include "base/Random.h"
#include "bench/NoteGenerator.h"
#include "bench/RawDatabase.h"
#include "server/HTTPFront.h"
#include "server/Service.h"
#include "sync/SyncClient.h"

#include <thread>

namespace tesserine::bench {
namespace {

constexpr std::size_t devices = 16;
constexpr std::size_t notesOfDevice = 125;
constexpr std::size_t noteCount = devices * notesOfDevice;
constexpr double goal = 1'000;  // notes a second
constexpr double noLimit = 1e9;

std::vector<SyncPush> makeNotes(Random& random) {
    const NoteGenerator generator(noteCount);
    std::vector<SyncPush> notes;
    for (std::size_t i = 0; i < noteCount; ++i) {
        const GeneratedNote note = generator.note(i);
        notes.push_back(
            {.id = Uuid::random(random),
             .kind = "note",
             .updatedAt = note.updatedAt,
             .payload = {{"title", note.title}, {"html", note.html.substr(0, 1'000)}}});
    }
    return notes;
}

double raw(const std::filesystem::path& file, const std::vector<SyncPush>& notes) {
    RawDatabase database(file, RawDatabase::Settings::ordinary);
    database.execute("PRAGMA synchronous = FULL");
    database.execute("CREATE TABLE records (id TEXT PRIMARY KEY, kind TEXT, payload TEXT)");
    auto insert = database.prepare("INSERT INTO records VALUES (?, ?, ?)");
    return secondsOf([&] {
        for (const SyncPush& note : notes) {
            const std::string id = note.id.wireText();
            const std::string payload = json::write(toJSON(note.payload));
            insert.bind(1, std::string_view(id));
            insert.bind(2, std::string_view(note.kind));
            insert.bind(3, std::string_view(payload));
            insert.run();
        }
    });
}

double ours(const std::filesystem::path& folder, const std::vector<SyncPush>& notes) {
    const SystemClock clock;
    SecureRandom random;
    const server::RateLimit::Allowance all{.perSecond = noLimit, .atOnce = noLimit};
    server::Service service(
        {.folder = folder, .passwordRounds = 1, .perAddress = all, .perToken = all},
        {.clock = clock, .random = random});
    service.accounts().setPassword("a@b.test", "secret");
    server::HTTPFront front(service, {.port = 0});
    HTTPSession network({.usesProxy = false});
    SyncClient client(
        "http://127.0.0.1:" + std::to_string(front.port()),
        {.session = network, .clock = clock, .random = random});
    const auto code = service.accounts().signIn("a@b.test", "secret");
    const std::string token = client.exchange(*code, "Bench").accessToken;
    client.setTokenSource([&token](const std::stop_token&) { return token; });
    return secondsOf([&] {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < devices; ++i) {
            threads.emplace_back(
                [&client, own = std::span(notes).subspan(i * notesOfDevice, notesOfDevice)] {
                    for (const SyncPush& note : own) {
                        client.push({note});
                    }
                });
        }
    });
}

}  // namespace

std::vector<Row> serviceJobs(const std::filesystem::path& folder, std::size_t rounds) {
    SecureRandom random;
    const auto notes = makeNotes(random);
    std::size_t turn = 0;
    const Comparison times = alternate(
        rounds,
        [&] {
            std::filesystem::create_directories(folder);
            return raw(folder / ("raw" + std::to_string(++turn) + ".sqlite"), notes);
        },
        [&] { return ours(folder / ("service" + std::to_string(turn)), notes); });
    std::filesystem::remove_all(folder);
    Row row = rowOf("Push small notes to the service, one a request", times, [](double seconds) {
        return perSecond(noteCount, seconds);
    });
    row.goal = "1,000/s";
    row.isReached = static_cast<double>(noteCount) / times.ours >= goal;
    return {row};
}

}  // namespace tesserine::bench
