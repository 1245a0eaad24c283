#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/StoreCore.h"
#include "core/store/StoreFixture.h"
#include "tests/support/PreparedStatements.h"

namespace tesserine {
namespace {

using Order = SortDescriptor::Order;

/// How SQLite answers what the program asks all the time, on a library with the usual proportions.
class QueryPlanTest : public test::StoreFixture {
public:
    QueryPlanTest() : store(open()) {
        StoreContext& context = store->viewContext();
        for (int i = 0; i < 400; ++i) {
            CDNote& note = addNote(context, "n", "<p>1</p>");
            note.updatedAt = clock.now() - Instant::Duration(i);
            if (i % 40 == 0) note.trashedAt = clock.now();
            if (i % 20 == 1) note.favoritedAt = clock.now();
            if (i % 20 == 2) note.importFingerprint = std::to_string(i);
            if (i % 50 == 3) note.isTemplate = true;
            auto& task = context.insert<CDTask>();
            if (i % 4 == 0) task.dueDate = clock.now();
            if (i % 2 == 0) task.completedAt = clock.now();
        }
        context.save();
    }

    /// Which index leads and whether rows are sorted: "SEARCH idx_CDNote_trashedAt", with
    /// " + sort" when every row has to be sorted before the first is known.
    std::string plan(EntityKind kind, const FetchRequest& request) const {
        StoreContext& context = store->viewContext();
        context.fetchObjects(kind, request);
        // Every case has a statement of its own.
        const std::string sql =
            test::newestStatement(context.reader(), " FROM " + Schema::library()[kind].table);
        Statement steps = context.reader().prepare("EXPLAIN QUERY PLAN " + sql);
        std::string result;
        while (steps.step()) {
            const std::string step = steps.text(3).value_or("");
            const auto index = step.find("INDEX ");
            if (step.starts_with("S")) {
                result += step.substr(0, step.find(' ')) + " ";
                result += index == std::string::npos
                              ? "table"
                              : step.substr(index + 6, step.find(' ', index + 6) - index - 6);
            } else if (step == "USE TEMP B-TREE FOR ORDER BY") {
                result += " + sort";
            }
        }
        return result;
    }

    std::unique_ptr<TesserineStore> store;
};

TEST_F(QueryPlanTest, ListsAndLookUpsStartAtTheIndexMadeForThem) {
    const Instant now = clock.now();
    struct Case {
        EntityKind kind;
        FetchRequest request;
        const char* plan;
    };
    const Predicate live("trashedAt == nil AND isTemplate == NO");
    const Case cases[] = {
        {EntityKind::note,
         {.predicate = live, .sort = {{"updatedAt", Order::descending}}, .limit = 200},
         "SCAN list_CDNote"},
        {EntityKind::note,
         {.predicate = live, .sort = {{"updatedAt", Order::descending}}},
         "SCAN list_CDNote"},
        {EntityKind::note,
         {.predicate = live, .sort = {{"createdAt"}}, .limit = 200},
         "SCAN idx_CDNote_createdAt"},
        {EntityKind::note,
         {.predicate = live,
          .sort = {{"isPinned", Order::descending}, {"updatedAt", Order::descending}},
          .limit = 50},
         "SCAN idx_CDNote_isPinned"},
        {EntityKind::note,
         {.predicate = {"favoritedAt != nil AND trashedAt == nil AND isTemplate == NO"},
          .sort = {{"favoritedAt", Order::descending}}},
         "SEARCH idx_CDNote_favoritedAt"},
        {EntityKind::note,
         {.predicate = {"trashedAt != nil"}, .sort = {{"trashedAt", Order::descending}}},
         "SEARCH idx_CDNote_trashedAt"},
        {EntityKind::note,
         {.predicate = {"trashedAt != nil AND trashedAt < %@", now}},
         "SEARCH idx_CDNote_trashedAt + sort"},
        {EntityKind::note,
         {.predicate = {"importFingerprint == %@ AND trashedAt == nil", "2"}},
         "SEARCH idx_CDNote_importFingerprint"},
        {EntityKind::note,
         {.predicate =
              {"trashedAt == nil AND isTemplate == NO AND reminderAt != nil AND reminderAt >= %@",
               now},
          .sort = {{"reminderAt"}}},
         "SEARCH idx_CDNote_reminderAt"},
        {EntityKind::note, {.predicate = {"id == %@", Uuid()}, .limit = 1}, "SEARCH key_CDNote_id"},
        {EntityKind::task,
         {.predicate =
              {"dueDate != nil AND dueDate >= %@ AND dueDate < %@ AND parent == nil", now, now},
          .sort = {{"dueDate"}}},
         "SEARCH idx_CDTask_dueDate"},
        {EntityKind::task,
         {.predicate = {"completedAt == nil AND parent == nil"},
          .sort = {{"sortIndex"}, {"createdAt"}}},
         "SCAN open_CDTask"},
        {EntityKind::task,
         {.predicate =
              {"completedAt == nil AND dueDate != nil AND dueDate < %@ AND parent == nil", now},
          .sort = {{"dueDate"}, {"priority"}, {"sortIndex"}}},
         "SEARCH due_CDTask"},
        {EntityKind::task,
         {.predicate = {"completedAt == nil AND dueDate >= %@ AND parent == nil", now},
          .sort = {{"dueDate"}, {"priority"}, {"sortIndex"}}},
         "SEARCH due_CDTask"},
        {EntityKind::task,
         {.predicate = {"completedAt != nil"}, .sort = {{"completedAt", Order::descending}}},
         "SEARCH done_CDTask"},
        {EntityKind::task,
         {.predicate = {"completedAt == nil AND reminderAt != nil AND reminderAt >= %@", now},
          .sort = {{"reminderAt"}}},
         "SEARCH remind_CDTask"},
        {EntityKind::task,
         {.predicate = {"parent == nil"}, .sort = {{"sortIndex", Order::descending}}, .limit = 1},
         "SCAN place_CDTask"},
        {EntityKind::attachment,
         {.predicate = {"sha256 == %@", "00"}},
         "SEARCH idx_CDAttachment_sha256"},
    };
    for (int pass = 0; pass < 2; ++pass) {
        for (const auto& [kind, request, expected] : cases) {
            SCOPED_TRACE(
                request.predicate.format() + (pass == 0 ? "" : " (with SQLite's statistics)"));
            EXPECT_EQ(plan(kind, request), expected);
        }
        store->core().beginWriting().database().execute("ANALYZE;");
        store = open();  // statistics are read when a connection is made
    }
}

TEST_F(QueryPlanTest, AListIndexThatHoldsLessThanTheModelListsIsMadeAnew) {
    const std::string columns = "SELECT group_concat(name) FROM pragma_index_info('list_CDNote')";
    const std::string asMade = store->viewContext().reader().text(columns);
    store->core().beginWriting().database().execute(
        "DROP INDEX list_CDNote; CREATE INDEX list_CDNote ON ZCDNOTE(ZUPDATEDAT DESC, ZID);");

    store = open();
    EXPECT_EQ(store->viewContext().reader().text(columns), asMade);

    // One that a newer program made wider stays: the two would take turns for ever.
    store->core().beginWriting().database().execute(
        "DROP INDEX list_CDNote; CREATE INDEX list_CDNote ON ZCDNOTE(" + asMade + ", ZLATITUDE);");
    store = open();
    EXPECT_EQ(store->viewContext().reader().text(columns), asMade + ",ZLATITUDE");
}

}  // namespace
}  // namespace tesserine
