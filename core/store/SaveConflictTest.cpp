#include "base/FailPoint.h"
#include "core/store/StoreCore.h"
#include "core/store/StoreFixture.h"
#include "tests/support/RecordingSink.h"

namespace tesserine {
namespace {

/// Two programs on one library, of which neither hears of the other's saves in time.
class SaveConflictTest : public test::StoreFixture {
public:
    SaveConflictTest() : store(open("mine")), other(open("theirs")) {}
    void TearDown() override { failpoint::disarmAll(); }

    StoreContext& mine() const { return store->viewContext(); }
    StoreContext& theirs() const { return other->viewContext(); }
    template <class Entity>
    Entity& theirs(const Entity& object) {
        return other->viewContext().get<Entity>(*object.id, "The object");
    }

    std::unique_ptr<TesserineStore> store;
    std::unique_ptr<TesserineStore> other;
};

TEST_F(SaveConflictTest, EachOfThreeStaleWritersKeepsTheBodyItReplaces) {
    CDNote& note = addNote(mine(), "n", "<p>0</p>");
    mine().save();
    const auto third = open("third");
    CDNote& second = theirs(note);
    auto& last = third->viewContext().get<CDNote>(*note.id, "The note");
    second.html = "<p>2</p>";
    last.html = "<p>3</p>";
    note.html = "<p>1</p>";
    mine().save();
    theirs().save();
    third->viewContext().save();
    EXPECT_EQ(last.html, "<p>3</p>");
    EXPECT_EQ(revisions(last), "conflict:<p>1</p> conflict:<p>2</p> ");
    store->processRemoteChanges();
    EXPECT_EQ(note.html, "<p>3</p>");
    EXPECT_EQ(revisions(note), revisions(last));
}

TEST_F(SaveConflictTest, TitlesChangedOnBothSidesKeepBothBodiesAndTheLogNamesWhatGaveWay) {
    const auto sink = std::make_shared<test::RecordingSink>();
    store.reset();
    store = open({.clock = clock, .random = random, .log = Log(sink, "test", "store")});
    CDNote& note = addNote(mine(), "old", "<p>0</p>");
    mine().save();
    theirs(note).title = "theirs, private";
    theirs(note).html = "<p>theirs</p>";
    theirs().save();
    note.title = "mine";
    mine().save();
    EXPECT_EQ(note.title, "mine");
    EXPECT_EQ(note.html, "<p>theirs</p>");
    EXPECT_EQ(revisions(note), "");
    EXPECT_TRUE(sink->holds("title"));
    EXPECT_FALSE(sink->holds("private")) << "texts never reach the log";
}

TEST_F(SaveConflictTest, ANoteTypedIntoComesBackWithAllItHeldWhenDeletedElsewhere) {
    const Bytes large(ExternalValues::inlineLimit + 1, 5);
    CDNote& note = addNote(mine(), "n", "<p>0</p>");
    note.originalSource = large;
    note.importMetadata = Bytes{1, 2};
    note.tags.add(mine().insert<CDTag>());
    mine().save();
    mine().releaseLargeValues();
    ASSERT_EQ(note.originalSource, large);  // read before it is deleted
    ASSERT_EQ(note.importMetadata, (Bytes{1, 2}));
    theirs().remove(theirs(note));
    theirs().save();

    note.html = "<p>typed</p>";
    mine().save();
    mine().reset();
    CDNote& back = *mine().fetchFirst<CDNote>({});
    EXPECT_EQ(back.html, "<p>typed</p>");
    EXPECT_EQ(back.title, "n");
    EXPECT_EQ(back.originalSource, large);
    EXPECT_EQ(back.importMetadata, (Bytes{1, 2}));
}

TEST_F(SaveConflictTest, WhatWasHungOnAnObjectAfterItsDeletionHereGoesOrLosesItsOwner) {
    CDNote& note = addNote(mine(), "n", "<p>0</p>");
    auto& book = mine().insert<CDNotebook>();
    auto& task = mine().insert<CDTask>();
    auto& tag = mine().insert<CDTag>();
    CDNote& stale = addNote(mine(), "stale", "");
    mine().save();
    mine().remove(note);
    mine().remove(book);
    mine().remove(task);
    mine().remove(tag);

    auto& attachment = theirs().insert<CDAttachment>();
    attachment.note = &theirs(note);
    auto& linked = theirs().insert<CDTask>();
    linked.linkedNote = &theirs(note);
    auto& placed = theirs(stale);
    placed.notebook = &theirs(book);
    placed.title = "renamed";
    placed.tags.add(theirs(tag));
    auto& subtask = theirs().insert<CDTask>();
    subtask.parent = &theirs(task);
    auto& below = theirs().insert<CDTask>();
    below.parent = &subtask;
    auto& child = theirs().insert<CDTag>();
    child.parent = &theirs(tag);
    theirs().save();

    mine().save();
    for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass == 0 ? "in the context" : "in the file");
        EXPECT_EQ(mine().count<CDAttachment>(), 0U);
        EXPECT_EQ(mine().count<CDTask>(), 1U);
        EXPECT_EQ(mine().count<CDTask>({"linkedNote == nil"}), 1U);
        EXPECT_EQ(mine().count<CDNote>({"notebook == nil"}), 1U);
        EXPECT_EQ(mine().count<CDTag>({"parent == nil"}), 1U);
        const auto left = mine().fetch<CDNote>();
        EXPECT_EQ(titles(left), "renamed ") << "what else they changed is seen as well";
        EXPECT_TRUE(left.front()->tags.empty());
        mine().reset();
    }
    SQLiteDatabase& rows = mine().reader();
    EXPECT_EQ(rows.integer("SELECT count(*) FROM ZCDNOTE WHERE ZNOTEBOOK IS NOT NULL"), 0);
    EXPECT_EQ(rows.integer("SELECT count(*) FROM ZCDTASK WHERE ZLINKEDNOTE IS NOT NULL"), 0);
    EXPECT_EQ(rows.integer("SELECT count(*) FROM ZCDTAG WHERE ZPARENT IS NOT NULL"), 0);
    EXPECT_EQ(rows.integer("SELECT count(*) FROM Z_CDNOTE_TAGS"), 0);
}

TEST_F(SaveConflictTest, WhenBothDeleteTheRowIsGoneOnceAndNothingFails) {
    CDNote& note = addNote(mine(), "n", "<p>0</p>");
    auto& revision = mine().insert<CDNoteRevision>();
    revision.note = &note;
    mine().save();
    theirs().remove(theirs(note));
    mine().remove(note);
    theirs().save();
    const auto before = store->lastTransactionNumber();
    mine().save();
    EXPECT_EQ(mine().count<CDNote>(), 0U);
    EXPECT_EQ(mine().count<CDNoteRevision>(), 0U);
    EXPECT_FALSE(mine().hasChanges());
    EXPECT_EQ(store->lastTransactionNumber(), before) << "nothing was left to write";
}

TEST_F(SaveConflictTest, TaggingANoteThatOthersEditedIsNoConflictOfItsBody) {
    CDNote& note = addNote(mine(), "n", "<p>0</p>");
    auto& tag = mine().insert<CDTag>();
    mine().save();
    theirs(note).html = "<p>theirs</p>";
    theirs().save();
    note.tags.add(tag);
    mine().save();
    EXPECT_EQ(note.html, "<p>theirs</p>");
    note.html = "<p>written on top of theirs</p>";
    mine().save();
    EXPECT_EQ(revisions(note), "");
    EXPECT_FALSE(bool(note.hasConflict));
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
/// What a context holds, as a person would read it.
std::string shown(StoreContext& context, CDNote& note) {
    std::string text = note.title.valueOr("-") + "|" + note.html.valueOr("-") + "|"
                       + (!note.hasConflict.get() ? "null"
                          : *note.hasConflict     ? "yes"
                                                  : "no");
    for (const auto& attribute : note.entity().attributes) {
        if (note.isChanged(*note.entity().attributeNamed(attribute.name))) {
            text += " " + attribute.name;
        }
    }
    text += "|" + std::to_string(note.tags.count()) + " tags";
    for (const CDNoteRevision* revision : note.revisions.all()) {
        text += revision->isInserted() ? " new" : " saved";
    }
    return text + (context.hasChanges() ? " pending" : "");
}

TEST_F(SaveConflictTest, AFailedSaveLeavesTheContextAsItWasAndTheNextOneDoesItAll) {
    for (const std::optional<bool> hadConflict : {std::optional<bool>{}, {false}, {true}}) {
        for (const char* place : {"save.begun", "save.written", "save.recorded"}) {
            SCOPED_TRACE(place);
            CDNote& note = addNote(mine(), "n", "<p>0</p>");
            CDNote& pinned = addNote(mine(), "deleted elsewhere", "");
            CDNote& removed = addNote(mine(), "removed here", "");
            note.hasConflict = hadConflict;
            mine().save();
            theirs(note).html = "<p>theirs</p>";
            theirs(note).sourceURL = "theirs";
            theirs().insert<CDAttachment>().note = &theirs(removed);
            theirs().remove(theirs(pinned));

            note.html = "<p>mine</p>";
            auto& tag = mine().insert<CDTag>();
            note.tags.add(tag);
            pinned.isPinned = true;
            mine().remove(removed);
            theirs().save();
            const std::string before = shown(mine(), note);

            failpoint::arm(place, 1, [] { throw std::runtime_error("no luck"); });
            EXPECT_THROW(mine().save(), std::runtime_error);
            EXPECT_EQ(shown(mine(), note), before);
            EXPECT_TRUE(tag.isInserted());
            EXPECT_TRUE(pinned.isChanged());
            EXPECT_TRUE(removed.isDeleted());
            EXPECT_EQ(theirs().count<CDNoteRevision>(), 0U);

            mine().save();
            EXPECT_EQ(revisions(note), "conflict:<p>theirs</p> ");
            EXPECT_EQ(note.sourceURL, "theirs");
            EXPECT_EQ(note.tags.count(), 1U);
            EXPECT_FALSE(mine().hasChanges());
            EXPECT_EQ(mine().count<CDNote>(), 1U);
            EXPECT_EQ(mine().count<CDAttachment>(), 0U);
            EXPECT_EQ(mine().count<CDTag>(), 1U);
            mine().remove(note);
            mine().remove(tag);
            mine().save();
            theirs().reset();
        }
    }
}
#endif

TEST_F(SaveConflictTest, RollingBackBringsBackLinksTargetsAndDeletedObjects) {
    CDNote& note = addNote(mine(), "n", "<p>0</p>");
    auto& book = mine().insert<CDNotebook>();
    book.name = "old";
    note.notebook = &book;
    auto& tag = mine().insert<CDTag>();
    note.tags.add(tag);
    auto& task = mine().insert<CDTask>();
    task.linkedNote = &note;
    mine().save();

    auto& newBook = mine().insert<CDNotebook>();
    note.notebook = &newBook;
    note.tags.remove(tag);
    note.tags.add(mine().insert<CDTag>());
    note.html = "<p>1</p>";
    mine().remove(book);
    mine().remove(task);
    theirs(book).name = "renamed elsewhere";
    theirs().save();
    mine().rollback();
    EXPECT_EQ(note.notebook.get(), &book);
    EXPECT_EQ(book.name, "renamed elsewhere");
    EXPECT_FALSE(task.isDeleted());
    EXPECT_EQ(task.linkedNote.get(), &note);
    EXPECT_EQ(note.tags.all(), std::vector{&tag});
    EXPECT_EQ(note.html, "<p>0</p>");
    EXPECT_TRUE(newBook.isDeleted());
    EXPECT_FALSE(mine().hasChanges());
    note.html = "<p>2</p>";
    mine().save();
    EXPECT_EQ(revisions(note), "");

    mine().remove(note);
    mine().insert<CDTag>();
    mine().reset();
    EXPECT_FALSE(mine().hasChanges());
    EXPECT_EQ(mine().count<CDNote>(), 1U);
    EXPECT_EQ(mine().count<CDTag>(), 1U);
}

TEST_F(SaveConflictTest, LimitsCountWhatIsPendingAndLeaveOutWhatIsDeleted) {
    std::vector<CDNote*> notes;
    for (char title = 'a'; title <= 'j'; ++title) {
        notes.push_back(&addNote(mine(), std::string(1, title), ""));
    }
    mine().save();
    mine().remove(*notes[0]);
    notes[1]->title = "z";
    notes[9]->title = "aa";
    notes[2]->trashedAt = clock.now();
    addNote(mine(), "bb", "");
    // aa bb d e f g h i z
    std::string all;
    for (std::size_t offset = 0; offset < 10; offset += 2) {
        all += titles(mine().fetch<CDNote>(
                   {.predicate = {"trashedAt == nil"},
                    .sort = {{"title"}},
                    .limit = 2,
                    .offset = offset}))
               + "| ";
    }
    EXPECT_EQ(all, "aa bb | d e | f g | h i | z | ");
}

TEST_F(SaveConflictTest, DigestsFollowEveryChangeAndGoWithTheRow) {
    const auto digests = [&] {
        Statement rows = mine().reader().prepare(
            "SELECT ENTITY || '.' || ATTRIBUTE || '=' || substr(lower(hex(SHA256)), 1, 8) FROM "
            "Z_DIGEST ORDER BY 1");
        std::string text;
        while (rows.step()) {
            text += rows.text(0).value_or("") + " ";
        }
        return text;
    };
    CDNote& note = addNote(mine(), "n", "abc");
    auto& attachment = mine().insert<CDAttachment>();
    attachment.note = &note;
    attachment.fileData = Bytes{'a', 'b', 'c'};
    attachment.thumbnailData = Bytes{1};
    mine().save();
    EXPECT_EQ(digests(), "CDAttachment.fileData=ba7816bf CDNote.html=ba7816bf ");
    note.html = "";
    attachment.fileData = std::nullopt;
    mine().save();
    EXPECT_EQ(digests(), "CDNote.html=e3b0c442 ");
    note.title = "renamed";
    mine().save();
    EXPECT_EQ(digests(), "CDNote.html=e3b0c442 ");
    mine().remove(note);
    mine().save();
    EXPECT_EQ(digests(), "");
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(SaveConflictTest, VersionsGrowByOneWithEachWriteAndKeysAreNeverUsedTwice) {
    CDNote& note = addNote(mine(), "n", "");
    mine().save();
    const std::int64_t key = note.key();
    const auto version = [&] { return mine().reader().integer("SELECT Z_OPT FROM ZCDNOTE"); };
    EXPECT_EQ(version(), 1);
    note.title = "1";
    mine().save();
    EXPECT_EQ(version(), 2);
    theirs(note).title = "2";
    theirs().save();
    note.isPinned = true;
    mine().save();
    EXPECT_EQ(version(), 4);
    note.tags.add(mine().insert<CDTag>());
    mine().save();
    EXPECT_EQ(version(), 4) << "links stand in a table of their own";
    mine().remove(note);
    mine().save();
    CDNote& next = addNote(mine(), "next", "");
    failpoint::arm("save.written", 1, [] { throw std::runtime_error("no luck"); });
    EXPECT_THROW(mine().save(), std::runtime_error);
    mine().save();
    EXPECT_EQ(next.key(), key + 1);
    EXPECT_EQ(mine().find<CDNote>(*next.id), &next);
}
#endif

}  // namespace
}  // namespace tesserine
