#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/StoreFixture.h"

namespace tesserine {
namespace {

using Order = SortDescriptor::Order;

/// A library that somebody else wrote in, by accident or on purpose.
class CraftedLibraryTest : public test::StoreFixture {
public:
    void makeLibrary() {
        const auto store = open();
        StoreContext& context = store->viewContext();
        for (const char* title : {"bad", "good"}) {
            CDNote& note = addNote(context, title, "<p>kept</p>");
            note.tags.add(context.insert<CDTag>());
            note.notebook = &context.insert<CDNotebook>();
        }
        context.save();
    }
    void tamper(const std::string& sql) const {
        SQLiteDatabase(libraryFile, {.journal = SQLiteDatabase::Journal::keep}).execute(sql);
    }
};

TEST_F(CraftedLibraryTest, ABadRowHidesNoOther) {
    for (const char* harm :
         {"ZTITLE = CAST(x'FF00FE' AS TEXT), ZHTML = CAST(x'3C703EC3283C2F703E' AS TEXT)",
          "ZTITLE = x'0042', ZPLAINTEXT = 7, ZISPINNED = 'perhaps', ZCONTENTVERSION = 1e300",
          "ZID = x'0102', ZCREATEDAT = 'yesterday', ZUPDATEDAT = NULL",
          "ZUPDATEDAT = 9e999, ZTRASHEDAT = NULL, ZREMINDERAT = -9e999",
          "ZNOTEBOOK = 'none', ZHTML = x'FF', ZORIGINALSOURCE = x'09', ZIMPORTMETADATA = 'text'",
          "ZNOTEBOOK = 9223372036854775807, ZTITLE = NULL, ZHTML = NULL, Z_OPT = NULL",
          "ZTITLE = printf('%.*c', 5000000, 'x')"}) {
        SCOPED_TRACE(harm);
        std::filesystem::remove_all(library);
        makeLibrary();
        tamper(
            std::string("UPDATE ZCDNOTE SET ") + harm
            + " WHERE Z_PK = 1; INSERT INTO Z_CDNOTE_TAGS VALUES (1, 777), (777, 1);"
              "UPDATE ZCDNOTEBOOK SET ZPARENT = Z_PK; UPDATE ZCDTAG SET ZPARENT = 3 - Z_PK;");

        const auto store = open();
        StoreContext& context = store->viewContext();
        const auto notes = context.fetch<CDNote>(
            {.predicate = {"trashedAt == nil AND isTemplate == NO"},
             .sort = {{"updatedAt", Order::descending}}});
        EXPECT_EQ(notes.size(), 2U);
        for (CDNote* note : notes) {
            EXPECT_LE(note->html.valueOr("").size(), 20U);
            EXPECT_EQ(note->tags.all().size(), 1U);
            note->plainText = "mended";
        }
        context.save();
        EXPECT_EQ(context.count<CDNote>({"plainText == %@", "mended"}), 2U);
        const CDNote* good = context.fetchFirst<CDNote>({.predicate = {"title == %@", "good"}});
        ASSERT_NE(good, nullptr);
        EXPECT_EQ(good->html, "<p>kept</p>");
    }
}

TEST_F(CraftedLibraryTest, NothingInTheFileRuns) {
    makeLibrary();
    tamper(R"(
        CREATE TRIGGER eat AFTER UPDATE ON ZCDNOTE BEGIN DELETE FROM ZCDNOTE; END;
        CREATE TABLE ZTHEIRS (A);
        ALTER TABLE ZCDTAG RENAME TO ZOTHER;
        CREATE VIEW ZCDTAG AS SELECT * FROM ZOTHER;
    )");
    EXPECT_THROW(open()->viewContext().fetch<CDTag>(), StoreError) << "a view is no table";
    tamper("DROP VIEW ZCDTAG; ALTER TABLE ZOTHER RENAME TO ZCDTAG;");

    const auto store = open();
    CDNote& note = *store->viewContext().fetchFirst<CDNote>({});
    note.title = "changed";
    store->viewContext().save();
    EXPECT_EQ(titles(store->viewContext()), "changed good ");
}

}  // namespace
}  // namespace tesserine
