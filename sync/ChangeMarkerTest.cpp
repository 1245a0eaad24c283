#include "sync/ChangeMarker.h"

#include "base/OperationCancelled.h"
#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "sync/SyncLedger.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

class ChangeMarkerTest : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    FixedClock clock_{*Instant::parseISO("2026-03-14T09:15:00Z")};
    test::SeededRandom random_{1};
    TesserineStore store_{{.directory = folder_ / "Library"}, {.clock = clock_, .random = random_}};
    std::unique_ptr<StoreContext> context_ = store_.newBackgroundContext();
    ChangeMarker marker_{store_};
};

TEST_F(ChangeMarkerTest, EveryChangeOfOneLargeSaveIsMarkedThoughTheLookIsCutShort) {
    marker_.catchUp(*context_);
    constexpr std::size_t count = 1'203;
    for (std::size_t i = 0; i < count; ++i) {
        context_->insert<CDNote>().title = std::to_string(i);
    }
    context_->save();
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(marker_.catchUp(*context_, stop.get_token()), OperationCancelled);
    marker_.catchUp(*context_);
    context_->reset();
    EXPECT_EQ(context_->count<CDSyncState>({"needsPush == YES"}), count);
}

TEST_F(ChangeMarkerTest, WhatTheServerNeverSawIsForgottenWithItsObject) {
    const Uuid unsent = *context_->insert<CDNote>().id;
    const Uuid sent = *context_->insert<CDNote>().id;
    context_->save();
    marker_.catchUp(*context_);
    context_->reset();
    SyncLedger(*context_).find(sent)->lastPushedAt = clock_.now();  // the answer may be lost
    context_->save();

    for (const Uuid& id : {unsent, sent}) {
        context_->remove(*context_->find<CDNote>(id));
    }
    context_->save();
    marker_.catchUp(*context_);
    context_->reset();
    const SyncLedger ledger(*context_);
    EXPECT_EQ(ledger.find(unsent), nullptr);
    ASSERT_NE(ledger.find(sent), nullptr);
    EXPECT_TRUE(static_cast<bool>(ledger.find(sent)->isTombstone));
    EXPECT_TRUE(static_cast<bool>(ledger.find(sent)->needsPush));
}

}  // namespace
}  // namespace tesserine
