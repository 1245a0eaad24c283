#include "base/FailPoint.h"
#include "search/CoordinatorFixture.h"
#include "search/IndexMeta.h"
#include "tests/support/Child.h"
#include "tests/support/FaultyVFS.h"

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <random>
#include <thread>

/// What the index survives: kills, other processes, full disks and damaged files.
namespace tesserine::test {
namespace {

class IndexFaults : public CoordinatorFixture {
protected:
    /// A library of so many notes with an index of it, both closed.
    void makeLibrary(int notes) {
        const auto store = open();
        addNotes(store->viewContext(), notes);
        coordinate(*store)->catchUp();
    }
    void expectTrueAfterNextStart() {
        const auto store = open();
        const auto coordinator = coordinate(*store);
        ASSERT_TRUE(coordinator->isOn());
        EXPECT_EQ(coordinator->catchUp(), Outcome::complete);
        EXPECT_EQ(dump(coordinator->index()), fromScratch(*store));
        EXPECT_TRUE(coordinator->coverage().isHealthy());
    }
    /// Some of everything, saved at once.
    static void changeSomething(StoreContext& context, int seed) {
        const auto notes = context.fetch<CDNote>();
        notes[static_cast<std::size_t>(seed) % notes.size()]->plainText =
            "changed " + std::to_string(seed);
        notes.front()->title = "first " + std::to_string(seed);
        context.remove(*notes.back());
        context.fetchFirst<CDTag>({})->name = "Tag " + std::to_string(seed);
        context.fetchFirst<CDNotebook>({})->name = "Notebook " + std::to_string(seed);
        context.save();
    }
};

#ifdef TESSERINE_FAIL_POINTS

TEST_F(IndexFaults, AKillAnywhereIsMendedByTheNextStart) {
    makeLibrary(450);
    struct Case {
        const char* point;
        int pass;
        bool isRebuild;
    };
    constexpr int killed = 137;
    int seed = 0;
    for (const auto& [point, pass, isRebuild] : {
             Case{"index.opened", 1, false},
             Case{"index.upsert", 1, false},
             Case{"index.upsert", 7, false},
             Case{"index.upsert", 230, false},
             Case{"index.commit", 1, false},
             Case{"index.commit", 2, false},
             Case{"coordinator.followed", 1, false},
             Case{"index.commit", 1, true},
             Case{"rebuild.cleared", 1, true},
             Case{"rebuild.batch", 1, true},
             Case{"rebuild.batch", 2, true},
             Case{"index.upsert", 300, true},
             Case{"index.commit", 3, true},
             Case{"rebuild.ended", 1, true},
         }) {
        SCOPED_TRACE(std::string(point) + " " + std::to_string(pass));
        const int status = runInChild([&, where = point, nth = pass, rebuild = isRebuild] {
            const auto store = open();
            changeSomething(store->viewContext(), ++seed);
            failpoint::arm(where, nth, [] { ::_exit(killed); });
            const auto coordinator = coordinate(*store);
            if (rebuild) {
                coordinator->rebuild();
            } else {
                coordinator->catchUp();
            }
        });
        EXPECT_EQ(status, killed);
        ++seed;
        expectTrueAfterNextStart();
    }
}

TEST_F(IndexFaults, AChangeOfVersionSurvivesAKill) {
    makeLibrary(5);
    SearchIndex(indexFile).setMeta("schema", "5");
    EXPECT_EQ(
        runInChild([&] {
            const auto store = open();
            failpoint::arm("index.opened", 1, [] { ::_exit(1); });
            coordinate(*store);
        }),
        1);
    expectTrueAfterNextStart();
}

#endif

TEST_F(IndexFaults, KillsAtRandomMomentsOfARebuildAreMended) {
    makeLibrary(600);
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand dice(seed);
    int interrupted = 0;
    for (int round = 0; round < 8; ++round) {
        const auto after = std::chrono::milliseconds(dice() % 120);
        runInChild([&] {
            const auto store = open();
            const auto coordinator = coordinate(*store);
            std::thread([after] {
                std::this_thread::sleep_for(after);
                ::kill(::getpid(), SIGKILL);
            }).detach();
            while (true) {
                coordinator->rebuild();
            }
        });
        const auto store = open();
        interrupted += coordinate(*store)->coverage().interruptedRebuild ? 1 : 0;
    }
    expectTrueAfterNextStart();
    EXPECT_GT(interrupted, 0);
}

TEST_F(IndexFaults, WhateverStandsInTheFilesPlaceTheLibraryOpens) {
    makeLibrary(20);
    struct Case {
        const char* what;
        std::function<void()> damage;
    };
    const std::string sound = contentOf(indexFile);
    const auto removeAll = [&] {
        for (const char* suffix : {"", "-wal", "-shm"}) {
            std::filesystem::remove_all(indexFile.string() + suffix);
        }
    };
    for (const auto& [what, damage] : {
             Case{"gone", [&] {}},
             Case{"empty", [&] { putContent(indexFile, ""); }},
             Case{"garbage", [&] { putContent(indexFile, std::string(9000, 'x')); }},
             Case{"zeros", [&] { putContent(indexFile, std::string(sound.size(), '\0')); }},
             Case{"cut short", [&] { putContent(indexFile, sound.substr(0, sound.size() / 2)); }},
             Case{"cut in the first page", [&] { putContent(indexFile, sound.substr(0, 700)); }},
             Case{
                 "zeroed in the middle",
                 [&] {
                     std::string holed = sound;
                     holed.replace(8192, holed.size() / 2, holed.size() / 2, '\0');
                     putContent(indexFile, holed);
                 }},
             Case{
                 "without a table's configuration",
                 [&] {
                     putContent(indexFile, sound);
                     SearchIndex(indexFile).perform([](SQLiteDatabase& database) {
                         database.execute("DELETE FROM fts_config");
                     });
                 }},
             Case{"its own log alone", [&] { putContent(indexFile.string() + "-wal", "log"); }},
         }) {
        SCOPED_TRACE(what);
        removeAll();
        damage();
        const auto store = open();
        const auto coordinator = coordinate(*store);
        ASSERT_TRUE(coordinator->isOn());
        coordinator->catchUp();
        EXPECT_EQ(coordinator->repair(Care::thorough), Outcome::complete);
        EXPECT_EQ(dump(coordinator->index()), fromScratch(*store));
    }

    removeAll();
    std::filesystem::create_directory(indexFile);
    const auto store = open();
    const auto coordinator = coordinate(*store);
    EXPECT_FALSE(coordinator->isOn());
    try {
        coordinator->index();
        FAIL() << "search is on";
    } catch (const SQLiteDatabase::Error& error) {
        EXPECT_STREQ(
            error.what(),
            "Tesserine could not open its search index. unable to open database file");
    }
    EXPECT_EQ(store->viewContext().count<CDNote>(), 20U);
}

TEST_F(IndexFaults, AFullDiskLeavesTheLibraryAloneAndIsTold) {
    makeLibrary(250);
    FaultyVFS disk("full-index-disk");
    {
        const auto store = open();
        const auto coordinator = coordinate(*store, disk.name());
        disk.fail({
            .operation = FaultyVFS::Operation::write,
            .file = FaultyVFS::File::wal,
            .nth = 40,
            .fault = FaultyVFS::Fault::full,
            .isLasting = true,
        });
        EXPECT_THROW(coordinator->rebuild(), SQLiteDatabase::Error);
        addNote(store->viewContext(), "written on a full disk", "");
        store->viewContext().save();
        EXPECT_THROW(coordinator->catchUp(), SQLiteDatabase::Error);
        EXPECT_FALSE(coordinator->coverage().isHealthy());

        disk.clear();
        EXPECT_EQ(coordinator->catchUp(), Outcome::complete);
        EXPECT_EQ(dump(coordinator->index()), fromScratch(*store));
    }
}

TEST_F(IndexFaults, ProcessesThatWriteAndSearchAtOnceAgreeInTheEnd) {
    makeLibrary(50);
    constexpr int writers = 2;
    const auto statuses = runInChildren(4, [&](int process) {
        const auto store = open("process " + std::to_string(process));
        const auto coordinator = coordinate(*store);
        for (int i = 0; i < 40; ++i) {
            const std::string word = "word" + std::to_string(process) + "x" + std::to_string(i);
            if (process < writers) {
                addNote(store->viewContext(), word, "").plainText = word;
                store->viewContext().save();
            }
            if (process == 3 && i % 8 == 0) coordinator->rebuild();
            coordinator->catchUp();
            const auto isFound = [&] {
                return rowsOf(
                           coordinator->index(),
                           "SELECT count(*) FROM fts WHERE fts MATCH '" + word + "'")
                       == "1\n";
            };
            // A rebuild that begins between the two takes the word away until it ends.
            const bool isRight = process >= writers || isFound()
                                 || IndexMeta(coordinator->index()).isRebuildUnfinished()
                                 || isFound();
            if (!isRight) throw std::runtime_error(word + " was not found");
        }
    });
    EXPECT_EQ(statuses, std::vector<int>(4, 0));
    expectTrueAfterNextStart();
}

}  // namespace
}  // namespace tesserine::test
