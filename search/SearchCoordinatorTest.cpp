#include "search/SearchCoordinator.h"

#include "search/CoordinatorFixture.h"
#include "search/IndexMeta.h"

#include <functional>
#include <future>
#include <stop_token>

namespace tesserine::test {
namespace {

class Coordinator : public CoordinatorFixture {
protected:
    void expectTrue(SearchCoordinator& coordinator) {
        EXPECT_EQ(coordinator.catchUp(), Outcome::complete);
        EXPECT_EQ(dump(coordinator.index()), fromScratch(*store));
        EXPECT_TRUE(coordinator.coverage().isHealthy()) << coordinator.coverage().summary("en");
    }

    std::unique_ptr<TesserineStore> store = open();
    StoreContext& context = store->viewContext();
};

TEST_F(Coordinator, FollowsEveryKindOfChange) {
    auto& work = context.insert<CDNotebook>();
    auto& home = context.insert<CDNotebook>();
    auto& paid = context.insert<CDTag>();
    auto& year = context.insert<CDTag>();
    auto& label = context.insert<CDTag>();
    work.name = "Work";
    home.name = "Home";
    paid.name = "Paid";
    year.name = "2026";
    label.name = "Label";
    CDNote& bill = addNote(context, "Bill", "");
    CDNote& letter = addNote(context, "Letter", "");
    CDNote* gone = &addNote(context, "Gone", "");
    CDAttachment& scan = addAttachment(context, bill, "");
    auto& task = context.insert<CDTask>();
    task.title = "Call";
    context.save();
    const auto coordinator = coordinate(*store);
    expectTrue(*coordinator);

    struct Step {
        const char* what;
        std::function<void()> change;
    };
    const std::vector<Step> steps{
        {"text edited", [&] { bill.plainText = "the new body, 12.50"; }},
        {"moved into a notebook",
         [&] {
             bill.notebook = &work;
             letter.notebook = &home;
         }},
        {"notebook renamed", [&] { work.name = "Käse"; }},
        {"tagged",
         [&] {
             bill.tags.add(paid);
             paid.notes.add(letter);
             task.labels.add(label);
         }},
        {"tag renamed",
         [&] {
             paid.name = "Bezahlt";
             label.name = "Etikett";
         }},
        {"tag moved", [&] { paid.parent = &year; }},
        {"tag above renamed", [&] { year.name = "2027"; }},
        {"untagged", [&] { letter.tags.remove(paid); }},
        {"tag deleted", [&] { context.remove(paid); }},
        {"notebook deleted", [&] { context.remove(home); }},
        {"text recognised", [&] { scan.ocrText = "account 1234 5678"; }},
        {"file renamed", [&] { scan.filename = "other.pdf"; }},
        {"file moved to another note", [&] { scan.note = &letter; }},
        {"file deleted", [&] { context.remove(scan); }},
        {"pinned, placed",
         [&] {
             bill.isPinned = true;
             bill.hasLocation = true;
             bill.latitude = 4;
         }},
        {"trashed", [&] { bill.trashedAt = clock.now(); }},
        {"restored", [&] { bill.trashedAt = std::nullopt; }},
        {"made a template", [&] { letter.isTemplate = true; }},
        {"made a note again", [&] { letter.isTemplate = false; }},
        {"task done",
         [&] {
             task.completedAt = clock.now();
             task.details = "spoken";
         }},
        {"deleted",
         [&] {
             context.remove(task);
             context.remove(*gone);
         }},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.what);
        step.change();  // none of them touches updatedAt
        context.save();
        expectTrue(*coordinator);
    }
}

TEST_F(Coordinator, TakesManyChangesAtOnceWithoutGhosts) {
    addNotes(context, 450);  // more than two batches
    const auto coordinator = coordinate(*store);
    expectTrue(*coordinator);

    const auto notes = context.fetch<CDNote>();
    for (CDNote* note : notes) {
        note->trashedAt = clock.now();
    }
    context.save();
    for (CDNote* note : notes) {
        note->trashedAt = std::nullopt;
        note->title = "restored";
    }
    context.save();
    for (std::size_t i = 0; i < notes.size(); i += 2) {
        context.remove(*notes[i]);
    }
    context.save();
    expectTrue(*coordinator);
    EXPECT_EQ(coordinator->coverage().indexedNotes, 225);
}

TEST_F(Coordinator, FindsWhatChangedWhileItWasNotRunning) {
    addNotes(context, 20);
    coordinate(*store)->catchUp();
    const auto rebuilt = [&] {
        SearchIndex index(indexFile);
        return IndexMeta(index).lastFullRebuild();
    };
    const auto firstRebuild = rebuilt();
    clock.advance(Instant::Duration(3600));

    const auto other = open("another process");
    other->viewContext().fetchFirst<CDNotebook>({})->name = "Renamed by another";
    other->viewContext().fetchFirst<CDNote>({})->plainText = "written in the same second";
    other->viewContext().save();
    expectTrue(*coordinate(*store));
    EXPECT_EQ(rebuilt(), firstRebuild);  // by following, not by starting over
}

TEST_F(Coordinator, RebuildsWhenTheHistoryIsNotItsOwn) {
    addNotes(context, 5);
    coordinate(*store)->catchUp();
    const std::string own = store->historyID();
    const std::vector<std::optional<std::string>> marks{
        "", "nonsense", "another-history 1", own + " 99999999", own + " -7", own + " 1x", {}};
    for (const auto& mark : marks) {
        SCOPED_TRACE(mark.value_or("none"));
        clock.advance(Instant::Duration(60));
        const auto coordinator = coordinate(*store);
        SearchIndex& index = coordinator->index();
        index.upsert({.title = "a leftover that following would not find"});
        index.setMeta("library_history", mark.value_or(""));
        if (!mark) index.deleteMeta("library_history");
        expectTrue(*coordinator);
        EXPECT_EQ(IndexMeta(index).lastFullRebuild(), clock.now());
    }
}

TEST_F(Coordinator, RebuildsWithProgressUntilItIsStopped) {
    addNotes(context, 450);
    const auto coordinator = coordinate(*store);
    std::stop_source stop;
    std::string progress;
    const SearchWork work{
        .stop = stop.get_token(),
        .progress =
            [&](std::size_t done, std::size_t total) {
                progress += std::to_string(done) + "/" + std::to_string(total) + " ";
                if (done == 400) stop.request_stop();
            },
    };
    EXPECT_EQ(coordinator->rebuild(work), Outcome::stopped);
    EXPECT_EQ(progress, "200/450 400/450 ");
    EXPECT_EQ(
        coordinator->coverage().summary("en_US"),
        "0 of 450 notes, 0 of 0 tasks, 0 of 90 attachments with text indexed — 450 missing, a "
        "rebuild was interrupted");

    clock.advance(Instant::Duration(60));
    expectTrue(*coordinator);  // the next call starts over
    EXPECT_EQ(coordinator->coverage().lastFullRebuild, clock.now());
}

TEST_F(Coordinator, MendsAnIndexThatWasTamperedWith) {
    addNotes(context, 30);
    const auto coordinator = coordinate(*store);
    struct Case {
        const char* damage;
        const char* summary;
    };
    for (const auto& [damage, summary] : {
             Case{"DELETE FROM docs WHERE rowid IN (SELECT rowid FROM docs LIMIT 3)", "3 missing"},
             Case{
                 "UPDATE docs SET sig = '1|2|3|4' WHERE rowid IN (SELECT rowid FROM docs LIMIT 2)",
                 "2 out of date"},
             Case{
                 "UPDATE docs SET kind = 'task' WHERE rowid IN (SELECT rowid FROM docs LIMIT 1)",
                 "1 out of date"},
             Case{
                 "INSERT INTO docs(uid, kind) VALUES('no uid', 'note'), "
                 "('00000000-0000-4000-8000-00000000000A', 'task')",
                 "2 leftover"},
             Case{"DELETE FROM atts", "attachment text differs"},
             Case{"DELETE FROM fts WHERE rowid IN (SELECT rowid FROM docs LIMIT 1)", "up to date"},
             Case{"DELETE FROM fts_data WHERE id > 100", "up to date"},
             Case{"DELETE FROM fts_docsize", "up to date"},
             Case{
                 "DELETE FROM fts; DELETE FROM docs; DELETE FROM atts; DELETE FROM afts",
                 "30 missing"},
             Case{"INSERT INTO meta VALUES('rebuild_started', '1')", "a rebuild was interrupted"},
             Case{"INSERT OR REPLACE INTO meta VALUES('schema', '5')", "old index format"},
             Case{"DROP TABLE afts", "up to date"},
             Case{"ALTER TABLE docs RENAME COLUMN att_text TO att_other", "up to date"},
         }) {
        SCOPED_TRACE(damage);
        expectTrue(*coordinator);
        coordinator->index().perform(
            [sql = damage](SQLiteDatabase& database) { database.execute(sql); });
        const std::string line = coordinator->coverage().summary("en_US");
        EXPECT_TRUE(line.ends_with(std::string(" — ") + summary)) << line;
        context.fetchFirst<CDNote>({})->title = damage;  // writing shows what reading does not
        context.save();
        EXPECT_EQ(coordinator->repair(Care::thorough), Outcome::complete);
    }
    expectTrue(*coordinator);
}

TEST_F(Coordinator, AQuickRepairTrustsTheFileAndMendsTheRest) {
    addNotes(context, 10);
    const auto coordinator = coordinate(*store);
    coordinator->catchUp();
    coordinator->index().perform([](SQLiteDatabase& database) {
        database.execute("UPDATE docs SET sig = 'old' WHERE rowid = 3; DELETE FROM tag_tree;");
    });
    const auto rebuilt = coordinator->coverage().lastFullRebuild;
    clock.advance(Instant::Duration(10));
    EXPECT_EQ(coordinator->repair(Care::quick), Outcome::complete);
    expectTrue(*coordinator);
    EXPECT_EQ(coordinator->coverage().lastFullRebuild, rebuilt);
    EXPECT_EQ(coordinator->coverage().lastRepair, clock.now());
}

TEST_F(Coordinator, LeavesARebuildToTheProcessThatIsAtIt) {
    addNotes(context, 10);
    const auto coordinator = coordinate(*store);
    {
        const auto lock = files::FolderLock::acquire(
            library / SearchCoordinator::lockFileName, std::chrono::milliseconds(0));
        ASSERT_TRUE(lock);
        EXPECT_EQ(coordinator->catchUp(), Outcome::beingRebuilt);
        EXPECT_EQ(coordinator->rebuild(), Outcome::beingRebuilt);
    }
    expectTrue(*coordinator);
}

TEST_F(Coordinator, TidyingSparesTheNextSaveTheLibrarysJournal) {
    const auto coordinator = coordinate(*store);
    coordinator->catchUp();
    const auto isInTheFile = [&](const char* text) {
        return contentOf(store->file()).find(text) != std::string::npos;
    };
    addNotes(context, 20);
    addNote(context, "the last one saved", "");
    context.save();
    coordinator->catchUp();
    EXPECT_FALSE(isInTheFile("the last one saved"));
    coordinator->tidyUp();
    EXPECT_TRUE(isInTheFile("the last one saved"));
}

TEST_F(Coordinator, FollowsByItselfOnceStarted) {
    addNotes(context, 10);
    std::promise<void> mended;
    std::promise<void> followed;
    int runs = 0;
    SearchCoordinator coordinator(
        *store, {.clock = clock, .changed = [&] {
                     ++runs;
                     if (runs == 2) mended.set_value();  // the rebuild, then the repair
                     if (runs == 3) followed.set_value();
                 }});
    coordinator.start();
    constexpr std::chrono::seconds longEnough{30};
    ASSERT_EQ(mended.get_future().wait_for(longEnough), std::future_status::ready);
    context.fetchFirst<CDNote>({})->title = "changed afterwards";
    context.save();
    ASSERT_EQ(followed.get_future().wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(dump(coordinator.index()), fromScratch(*store));
}

}  // namespace
}  // namespace tesserine::test
