#include "sync/PushBatch.h"

#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "sync/SyncLedger.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

const Uuid one = *Uuid::parse("00000000-0000-4000-8000-000000000001");
const Uuid two = *Uuid::parse("00000000-0000-4000-8000-000000000002");

TEST(PushRefusals, OutliveTheProgramAndEndByTheirReason) {
    PushRefusals refusals;
    refusals.add(one, {.reason = "quota", .message = "Full: “a”.", .measured = 900, .digest = "x"});
    refusals.add(two, {.reason = "quota", .limit = 5, .digest = "y"});
    PushRefusals again(refusals.text());
    EXPECT_EQ(again.all().at(one).message, "Full: “a”.");
    EXPECT_EQ(again.all().at(one).limit, std::nullopt);
    EXPECT_EQ(again.all().at(two).limit, 5);
    EXPECT_EQ(again.smallest("quota"), 0) << "of unknown size";
    EXPECT_EQ(again.smallest("too_large"), std::nullopt);
    EXPECT_TRUE(again.holds(one, "x"));
    EXPECT_FALSE(again.holds(one, "changed since"));
    again.forget("quota");
    EXPECT_TRUE(again.all().empty());
}

TEST(PushRefusals, WhatCannotBeReadRefusesNothing) {
    for (const char* text : {"", "[]", "{", R"({"no id":{}})", "nonsense"}) {
        EXPECT_TRUE(PushRefusals(text).all().empty()) << text;
    }
    const PushRefusals odd(R"({"00000000-0000-4000-8000-000000000001":5})");
    EXPECT_FALSE(odd.holds(one, "x"));
}

TEST(RecordsToPush, ComeAfterWhatTheyReferToAndDeletionsLast) {
    const test::TemporaryFolder folder;
    const FixedClock clock(*Instant::parseISO("2026-03-14T09:15:00Z"));
    test::SeededRandom random(1);
    TesserineStore store({.directory = folder / "Library"}, {.clock = clock, .random = random});
    const auto context = store.newBackgroundContext();
    const SyncLedger ledger(*context);
    const auto mark = [&](const Uuid& id, const char* kind, bool isTombstone = false) {
        CDSyncState& state = ledger.at(id, kind);
        state.needsPush = true;
        state.isTombstone = isTombstone;
    };

    auto& task = context->insert<CDTask>();
    auto& subtask = context->insert<CDTask>();
    auto& note = context->insert<CDNote>();
    auto& below = context->insert<CDNotebook>();
    auto& above = context->insert<CDNotebook>();
    subtask.parent = &task;
    below.parent = &above;
    mark(one, "notebook", true);
    mark(*subtask.id, "task");
    mark(*task.id, "task");
    mark(*note.id, "note");
    mark(*below.id, "notebook");
    mark(*above.id, "notebook");
    mark(two, "drawing");  // of a newer program: not ours to send
    context->save();
    EXPECT_EQ(
        recordsToPush(*context),
        (std::vector{*above.id, *below.id, *note.id, *task.id, *subtask.id, one}));
}

}  // namespace
}  // namespace tesserine
