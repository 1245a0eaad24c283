#include "core/store/ExternalValues.h"

#include "base/FailPoint.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/StoreFixture.h"
#include "tests/support/Child.h"

#include <unistd.h>

#include <set>

namespace tesserine {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// Large values beside the library: what may happen to their files.
class ExternalValuesTest : public test::StoreFixture {
public:
    void TearDown() override { failpoint::disarmAll(); }

    CDAttachment& addAttachment(StoreContext& context, std::uint8_t content) {
        auto& attachment = context.insert<CDAttachment>();
        attachment.filename = "scan.pdf";
        attachment.fileData = Bytes(size, content);
        context.save();
        return attachment;
    }
    std::set<fs::path> files() const {
        std::set<fs::path> result;
        if (!fs::exists(place)) return result;
        for (const auto& entry : fs::directory_iterator(place)) {
            result.insert(entry.path());
        }
        return result;
    }
    static void makeOld(const fs::path& path) {
        fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(25));
    }

    static constexpr std::size_t size = ExternalValues::inlineLimit + 1;
    fs::path place = library / ".Tesserine_SUPPORT" / "_EXTERNAL_DATA";
};

TEST_F(ExternalValuesTest, AMissingFileIsNoValueAndTheRowGoesOnNamingIt) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDAttachment& attachment = addAttachment(context, 1);
    const fs::path stored = *files().begin();
    const fs::path away = folder / "away";
    struct Case {
        const char* what;
        std::function<void()> harm;
    };
    const Case cases[] = {
        {"gone", [] {}},
        {"a link to another file", [&] { fs::create_symlink(away, stored); }},
        {"a folder", [&] { fs::create_directory(stored); }},
    };
    for (const auto& [what, harm] : cases) {
        SCOPED_TRACE(what);
        fs::rename(stored, away);
        harm();
        context.releaseLargeValues();
        EXPECT_FALSE(attachment.fileData);
        attachment.filename = what;
        context.save();
        fs::remove(stored);
        fs::rename(away, stored);
        context.releaseLargeValues();
        EXPECT_EQ(attachment.fileData, Bytes(size, 1)) << "changing its name kept its content";
    }
    fs::resize_file(stored, 10);
    context.releaseLargeValues();
    EXPECT_EQ(attachment.fileData, Bytes(10, 1)) << "what is left can be read";
    EXPECT_EQ(attachment.byteCount, 0);
}

TEST_F(ExternalValuesTest, AColumnNeverLeadsOutOfTheFolder) {
    test::putContent(folder / "secret", "secret");
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDAttachment& attachment = addAttachment(context, 1);
    for (const char* column :
         {"x'022E2E2F2E2E2F2E2E2F736563726574'",  // "../../../secret"
          "x'02'",
          "x''",
          "x'07FFFF'",
          "'text'",
          "x'02' || CAST('00000000-0000-4000-8000-00000000000/' AS BLOB)"}) {
        SCOPED_TRACE(column);
        SQLiteDatabase(libraryFile, {.journal = SQLiteDatabase::Journal::keep})
            .execute(std::string("UPDATE ZCDATTACHMENT SET ZFILEDATA = ") + column + ";");
        context.releaseLargeValues();
        EXPECT_FALSE(attachment.fileData);
    }
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(ExternalValuesTest, AKillBetweenFileAndRowLeavesAStrayThatIsSweptWhenOld) {
    open().reset();
    ASSERT_EQ(
        test::runInChild([&] {
            const auto store = open();
            addAttachment(store->viewContext(), 1);
            failpoint::arm("external.written", 1, [] { ::_exit(1); });
            addAttachment(store->viewContext(), 2);
        }),
        1);
    const auto store = open();
    StoreContext& context = store->viewContext();
    ASSERT_EQ(context.count<CDAttachment>(), 1U);
    ASSERT_EQ(files().size(), 2U);
    const fs::path unfinished = place / "11111111-1111-4111-8111-111111111111.tmp-0123456789abcdef";
    test::putContent(unfinished, "half");
    const fs::path foreign = place / "notes of the user.txt";
    test::putContent(foreign, "precious");

    EXPECT_EQ(store->tidyUp(), 0U) << "it may belong to a save that is about to commit";
    for (const fs::path& path : files()) {
        makeOld(path);
    }
    EXPECT_EQ(store->tidyUp(), 1U);
    EXPECT_EQ(files().size(), 2U);
    EXPECT_TRUE(fs::exists(foreign));
    EXPECT_EQ(context.fetchFirst<CDAttachment>({})->fileData, Bytes(size, 1));
}

TEST_F(ExternalValuesTest, AValueReplacedElsewhereWhileItIsReadIsReadAsReplaced) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDAttachment& attachment = addAttachment(context, 1);
    context.releaseLargeValues();
    const auto other = open("other");
    failpoint::arm("external.reading", 1, [&] {
        // Between the row and the file of the first value, which is removed with it.
        other->viewContext().get<CDAttachment>(*attachment.id, "It").fileData = Bytes(size, 2);
        other->viewContext().save();
    });
    EXPECT_EQ(attachment.fileData, Bytes(size, 2));
}
#endif

TEST_F(ExternalValuesTest, EqualValuesShareOneFileAndNeverLoseIt) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDAttachment& original = addAttachment(context, 1);
    makeOld(*files().begin());
    auto& second = context.insert<CDAttachment>();
    second.fileData = original.fileData;
    auto& third = context.insert<CDAttachment>();
    third.fileData = original.fileData;
    context.save();
    ASSERT_EQ(files().size(), 3U);
    for (const fs::path& path : files()) {
        EXPECT_EQ(fs::hard_link_count(path), 3U) << "one place on the disk";
        EXPECT_LT(fs::file_time_type::clock::now() - fs::last_write_time(path), 1h)
            << "while no row named it yet, a sweep would have taken it for a stray";
    }

    context.remove(original);
    second.fileData = Bytes(size, 2);
    context.save();
    context.releaseLargeValues();
    EXPECT_EQ(second.fileData, Bytes(size, 2));
    EXPECT_EQ(third.fileData, Bytes(size, 1));
    EXPECT_EQ(files().size(), 2U);
}

TEST_F(ExternalValuesTest, ADamagedFileIsNotShared) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDAttachment& original = addAttachment(context, 1);
    const fs::path stored = *files().begin();
    struct Case {
        const char* what;
        std::function<void()> harm;
    };
    for (const auto& [what, harm] : {
             Case{"cut short", [&] { fs::resize_file(stored, size - 1); }},
             Case{"of the same length", [&] { test::putContent(stored, std::string(size, 'x')); }},
             Case{"gone", [&] { fs::remove(stored); }},
         }) {
        SCOPED_TRACE(what);
        harm();
        context.releaseLargeValues();
        EXPECT_NE(original.fileData, Bytes(size, 1));
        CDAttachment& again = addAttachment(context, 1);
        context.releaseLargeValues();
        EXPECT_EQ(again.fileData, Bytes(size, 1));
        context.remove(again);
        context.save();
    }
}

TEST_F(ExternalValuesTest, FilesFollowTheirValues) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDAttachment& attachment = addAttachment(context, 1);
    const auto first = files();
    attachment.filename = "renamed";
    context.save();
    EXPECT_EQ(files(), first);
    attachment.fileData = Bytes(size, 2);
    EXPECT_EQ(files(), first) << "nothing happens before the save";
    context.rollback();
    EXPECT_EQ(attachment.fileData, Bytes(size, 1));
    attachment.fileData = Bytes(size, 2);
    context.save();
    EXPECT_EQ(files().size(), 1U);
    EXPECT_NE(files(), first);
    attachment.thumbnailData = Bytes(size, 3);
    context.save();
    EXPECT_EQ(files().size(), 2U);
    attachment.fileData = Bytes{1};
    attachment.thumbnailData = std::nullopt;
    context.save();
    EXPECT_TRUE(files().empty());
    context.releaseLargeValues();
    EXPECT_EQ(attachment.fileData, Bytes{1});
    attachment.fileData = Bytes{};
    context.save();
    context.releaseLargeValues();
    EXPECT_EQ(attachment.fileData, Bytes{}) << "an empty file is not an absent one";
}

}  // namespace
}  // namespace tesserine
