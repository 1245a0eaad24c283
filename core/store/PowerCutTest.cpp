#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/StoreFixture.h"
#include "tests/support/Child.h"
#include "tests/support/FaultyVFS.h"

namespace tesserine {
namespace {

using test::FaultyVFS;

/// A machine whose power fails: what the disk was not told to keep may be gone.
class PowerCutTest : public test::StoreFixture {
public:
    /// Saves note after note, and their number in the title of the first, telling `answer` of each
    /// save that succeeded, until the power fails at `rule` or after the last save.
    void saveUntilThePowerFails(const FaultyVFS::Rule& rule) {
        FaultyVFS disk("power");
        StoreEnvironment with = environment();
        with.sqliteVFS = disk.name();
        const auto store = open(with);
        StoreContext& context = store->viewContext();
        CDNote& counter = *context.fetchFirst<CDNote>({});
        disk.fail(rule);
        for (int count = 1; count <= saves; ++count) {
            addNote(context, "note", std::string(9'000, 'a'));
            counter.title = std::to_string(count);
            context.save();
            test::putContent(answer, std::to_string(count));
            if (count % 3 == 0) store->checkpoint();
        }
        disk.cutPower(rule.seed);
    }

    static constexpr int saves = 9;
    std::filesystem::path answer = folder / "answer";
};

TEST_F(PowerCutTest, EverySaveThatSucceededIsThereAndNoOtherInPart) {
    int cutWhileSaving = 0;
    for (int turn = 0; turn < 24; ++turn) {
        SCOPED_TRACE(turn);
        std::filesystem::remove_all(library);
        test::putContent(answer, "0");
        {
            const auto store = open();
            addNote(store->viewContext(), "0", "");
            store->viewContext().save();
        }
        // Before each sync the most is at stake; in between a write may follow an answer.
        const bool isAtSync = turn % 2 == 0;
        const FaultyVFS::Rule rule{
            .operation = isAtSync ? FaultyVFS::Operation::sync : FaultyVFS::Operation::any,
            .nth = isAtSync ? 1 + turn / 2 : 1 + 7 * turn / 2,
            .fault = FaultyVFS::Fault::powerCut,
            .seed = static_cast<std::uint64_t>(turn)};
        ASSERT_EQ(test::runInChild([&] { saveUntilThePowerFails(rule); }), FaultyVFS::killedStatus);

        const auto store = open();
        StoreContext& context = store->viewContext();
        ASSERT_EQ(context.reader().text("PRAGMA integrity_check"), "ok");
        const int answered = std::stoi(test::contentOf(answer));
        const auto notes = context.fetch<CDNote>();
        const int found = std::stoi(notes.front()->title.valueOr("none"));
        ASSERT_EQ(notes.size(), static_cast<std::size_t>(found) + 1) << "a save in part";
        ASSERT_GE(found, answered) << "a save that was acknowledged is lost";
        ASSERT_LE(found, answered + 1);
        ASSERT_EQ(notes.back()->html, found == 0 ? "" : std::string(9'000, 'a'));
        notes.front()->title = "and on";
        context.save();
        if (answered < saves) ++cutWhileSaving;
    }
    EXPECT_GT(cutWhileSaving, 20) << "the power failed at the saves and checkpoints meant";
}

}  // namespace
}  // namespace tesserine
