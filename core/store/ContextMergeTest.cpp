#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/StoreFixture.h"

namespace tesserine {
namespace {

/// What a context shows after others changed the relationships it looks at.
class ContextMergeTest : public test::StoreFixture {
public:
    ContextMergeTest() : store(open("mine")), other(open("theirs")) {
        for (const char* name : {"a", "b", "c"}) {
            books.push_back(&mine().insert<CDNotebook>());
            books.back()->name = name;
        }
        note = &addNote(mine(), "n", "<p>1</p>");
        note->notebook = books[0];
        mine().save();
        same = theirs().find<CDNote>(*note->id);
    }

    StoreContext& mine() const { return store->viewContext(); }
    StoreContext& theirs() const { return other->viewContext(); }
    template <class Entity>
    Entity& theirs(const Entity& object) {
        return other->viewContext().get<Entity>(*object.id, "The object");
    }
    std::string bookOf(CDNote& of) {
        CDNotebook* book = of.notebook;
        return book == nullptr ? "none" : book->name.valueOr("-");
    }
    /// What another program finds in the file.
    std::string storedBook() {
        return bookOf(open("reader")->viewContext().get<CDNote>(*note->id, "The note"));
    }

    std::unique_ptr<TesserineStore> store;
    std::unique_ptr<TesserineStore> other;
    std::vector<CDNotebook*> books;
    CDNote* note = nullptr;
    CDNote* same = nullptr;
};

TEST_F(ContextMergeTest, AMoveElsewhereIsFollowedUnlessItWasMovedHereToo) {
    note->title = "mine";  // pending, and none of the other's business
    same->notebook = &theirs(*books[1]);
    theirs().remove(theirs(*books[0]));
    theirs().save();
    store->processRemoteChanges();
    EXPECT_EQ(bookOf(*note), "b");
    EXPECT_TRUE(books[0]->isDeleted());
    EXPECT_TRUE(books[1]->notes.contains(*note));
    mine().save();
    EXPECT_EQ(storedBook(), "b");

    other->processRemoteChanges();
    note->notebook = books[2];
    same->notebook = nullptr;
    theirs().save();
    store->processRemoteChanges();
    EXPECT_EQ(bookOf(*note), "c");
    mine().save();
    EXPECT_EQ(storedBook(), "c");
    EXPECT_EQ(same->title, "mine");
}

TEST_F(ContextMergeTest, WhatWasTiedHereToSomethingDeletedElsewhereIsLeftUntied) {
    for (const bool isMergedFirst : {true, false}) {
        SCOPED_TRACE(isMergedFirst ? "merged first" : "met in the save");
        auto& book = mine().insert<CDNotebook>();
        auto& tag = mine().insert<CDTag>();
        mine().save();
        note->notebook = &book;
        note->tags.add(tag);
        auto& task = mine().insert<CDTask>();
        task.labels.add(tag);
        theirs().remove(theirs(book));
        theirs().remove(theirs(tag));
        theirs().save();
        if (isMergedFirst) store->processRemoteChanges();
        mine().save();
        store->processRemoteChanges();
        EXPECT_EQ(bookOf(*note), "none");
        EXPECT_TRUE(note->tags.empty());
        EXPECT_TRUE(task.labels.empty());
        EXPECT_EQ(storedBook(), "none");
        SQLiteDatabase& rows = mine().reader();
        EXPECT_EQ(rows.integer("SELECT count(*) FROM ZCDNOTE WHERE ZNOTEBOOK IS NOT NULL"), 0);
        EXPECT_EQ(rows.integer("SELECT count(*) FROM Z_CDNOTE_TAGS"), 0);
        EXPECT_EQ(rows.integer("SELECT count(*) FROM Z_CDTASK_LABELS"), 0);
        EXPECT_EQ(mine().count<CDNote>({"notebook == nil"}), 1U);
    }
}

TEST_F(ContextMergeTest, AFollowerMaySaveWhileItIsToldOfASave) {
    const auto background = store->newBackgroundContext();
    int told = 0;
    mine().setObserver([&](const std::vector<ObjectChange>&) {
        if (++told > 1) return;
        note->title = "answer";
        mine().save();
    });
    background->get<CDNote>(*note->id, "The note").isPinned = true;
    background->save();
    EXPECT_EQ(told, 2);
    EXPECT_EQ(note->title, "answer");
    EXPECT_TRUE(bool(note->isPinned));
}

TEST_F(ContextMergeTest, TreesThatGoRoundInACircleCanBeReadAndDeleted) {
    auto& first = mine().insert<CDTask>();
    auto& second = mine().insert<CDTask>();
    first.parent = &second;
    second.parent = &first;
    auto& self = mine().insert<CDTask>();
    self.parent = &self;
    books[0]->parent = books[1];
    books[1]->parent = books[0];
    for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass == 0 ? "pending" : "saved");
        EXPECT_EQ(mine().count<CDTask>({"parent == nil"}), 0U);
        EXPECT_EQ(mine().count<CDNotebook>({"parent.parent.name == %@", "a"}), 1U);
        EXPECT_EQ(first.subtasks.all(), std::vector{&second});
        EXPECT_EQ(self.subtasks.all(), std::vector{&self});
        mine().save();
    }
    mine().remove(first);
    mine().remove(self);
    mine().remove(*books[0]);
    mine().save();
    EXPECT_EQ(mine().count<CDTask>(), 0U);
    EXPECT_EQ(books[1]->parent.get(), nullptr);
    EXPECT_EQ(mine().count<CDNotebook>(), 2U);
}

TEST_F(ContextMergeTest, VeryDeepTreesAreDeletedWithoutRecursion) {
    constexpr int depth = 10'000;
    CDTask* last = &mine().insert<CDTask>();
    const Uuid root = *last->id;
    for (int i = 1; i < depth; ++i) {
        auto& subtask = mine().insert<CDTask>();
        subtask.parent = last;
        last = &subtask;
    }
    mine().save();
    theirs().remove(*theirs().find<CDTask>(root));
    theirs().save();
    EXPECT_EQ(theirs().count<CDTask>(), 0U);
    store->processRemoteChanges();
    EXPECT_TRUE(last->isDeleted());
}

TEST(StoreConfiguration, TheLibraryStandsInTheUsersDataFolder) {
    const auto folder = [](const std::optional<std::string>& dataHome) {
        return StoreConfiguration::defaultDirectory(dataHome, "/home/ann").string();
    };
    EXPECT_EQ(folder({}), "/home/ann/.local/share/Tesserine");
    EXPECT_EQ(folder("/data"), "/data/Tesserine");
    EXPECT_EQ(folder("data"), "/home/ann/.local/share/Tesserine");
    EXPECT_EQ(folder(""), "/home/ann/.local/share/Tesserine");
    test::TemporaryFolder temporary;
    SecureRandom random;
    const auto directory = StoreConfiguration::forTests(temporary.path(), random).directory;
    EXPECT_TRUE(directory.filename().string().starts_with("TesserineTests-"));
    EXPECT_TRUE(Uuid::parse(directory.filename().string().substr(15)));
    EXPECT_TRUE(std::filesystem::is_directory(directory));
}

}  // namespace
}  // namespace tesserine
