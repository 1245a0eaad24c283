#include "app/account/RefusedItems.h"

#include "app/state/WindowFixture.h"
#include "core/model/NoteEntities.h"
#include "sync/PushBatch.h"
#include "sync/SyncLedger.h"

namespace tesserine::app {
namespace {

class RefusedItemsTest : public test::WindowFixture {
public:
    /// As sync leaves them for the window.
    void refuse(const std::vector<std::pair<Uuid, PushRefusal>>& all) {
        PushRefusals refusals;
        for (const auto& [record, refusal] : all) {
            refusals.add(record, refusal);
        }
        const SyncLedger ledger(context());
        ledger.setValue(SyncLedger::refusals, refusals.text());
        context().save();
    }
    std::string lines() {
        std::string text;
        for (const RefusedItem& item : refusedItems(context())) {
            text += item.title + ": " + item.sentence + "\n";
        }
        return text;
    }
};

TEST_F(RefusedItemsTest, NameWhatWasRefusedAndWhy) {
    EXPECT_EQ(lines(), "");
    CDTag& tag = *environment->tags().findOrCreate(context(), "work");
    context().save();
    refuse({
        {*addNote("Plan").id, {.reason = "quota"}},
        {*addNote("").id, {.reason = "missing_attachment"}},
        {*addNote("Enormous").id,
         {.reason = "too_large", .limit = 1'000'000, .measured = 2'500'000}},
        {*addNote("Large").id, {.reason = "too_large"}},
        {*addTask("Call Ann").id, {.reason = "moon_phase"}},
        {*tag.id, {.reason = "quota", .message = "Your household has no room left."}},
        {*Uuid::parse("6A4D0DF2-1FD6-4A35-8C67-9D6C9E4BE5D2"), {.reason = "too_large", .limit = 5}},
    });
    EXPECT_EQ(
        lines(),
        "Call Ann: The service did not take it (moon_phase).\n"
        "Enormous: It takes 2.5 MB, and the service takes 1.0 MB at most.\n"
        "Large: It is larger than the service takes.\n"
        "Plan: There is no room left for it at the service.\n"
        "Something else in the library: It is larger than the service takes.\n"
        "Something else in the library: Your household has no room left.\n"
        "Untitled note: One of its files is not there yet.\n");
}

}  // namespace
}  // namespace tesserine::app
