#include "app/editor/EditorFixture.h"
#include "app/editor/NoticeBar.h"
#include "core/model/NoteEntities.h"
#include "tests/support/FaultyVFS.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

#include <cstdlib>

namespace tesserine::app {
namespace {

/// A body that is read, shown and written piece by piece; one that ends with `last`.
std::string longBody(const std::string& last) {
    std::string body;
    for (int i = 0; body.size() < 3 * BodyLoader::longBody; ++i) {
        body += "<h2>Day " + std::to_string(i) + "</h2><p>Rain <strong>again</strong>, tea at four."
                + "</p><ul><li>seeds</li><li>string</li></ul>";
    }
    return body + "<p>" + last + "</p>";
}

class LongNote : public test::EditorFixture {
public:
    CDNote& openLong(const std::string& last) {
        CDNote& note = addNote(last, longBody(last));
        editor.open(*note.id);
        editor.body().setFocus();
        return note;
    }
    bool hasConflict(const CDNote& note) {
        for (const CDNoteRevision* revision : environment->notes().revisions(note)) {
            if (revision->reason == "conflict") return true;
        }
        return note.hasConflict.valueOr(false);
    }
};

TEST_F(LongNote, ComesPieceByPieceAndUnchanged) {
    int pieces = 0;
    const QObject listening;  // ends before `pieces` does
    const CDNote& note = openLong("end");
    EXPECT_TRUE(editor.body().isLoading());
    QObject::connect(
        editor.body().document(), &QTextDocument::contentsChanged, &listening, [&] { ++pieces; });
    ASSERT_TRUE(waitUntil([&] { return !editor.body().isLoading(); }));
    EXPECT_GT(pieces, 10);
    EXPECT_EQ(html(), *note.html);
    EXPECT_FALSE(document().isUndoAvailable());
    EXPECT_TRUE(editor.close());
    EXPECT_EQ(*note.contentVersion, 1);
}

TEST_F(LongNote, KeepsItsLinesWhileTheWindowIsBeingResized) {
    openNote("<p>short|</p>");
    const double wide = document().textWidth();
    editor.resize(600, 600);
    EXPECT_LT(document().textWidth(), wide) << "a short one follows at once";

    openLong("end");
    ASSERT_TRUE(waitUntil([&] { return !editor.body().isLoading(); }));
    const double before = document().textWidth();
    editor.resize(500, 600);
    editor.resize(450, 600);
    EXPECT_EQ(document().textWidth(), before);
    EXPECT_TRUE(
        waitUntil([&] { return document().textWidth() == editor.body().viewport()->width(); }));
    EXPECT_LT(document().textWidth(), before);
}

TEST_F(LongNote, KeepsThePlaceWhereItIsRead) {
    BodyEdit& body = editor.body();
    const auto first = [&] { return body.cursorForPosition(QPoint(0, 0)).position(); };
    // Lines begin elsewhere then; whatever the font, the top may be one of them further on or back.
    const auto isSame = [&](int place) { return std::abs(first() - place) < 150; };
    for (const std::string& html : {longBody("end"), longBody("end").substr(0, 20'000)}) {
        CDNote& note = addNote("Long", html);
        editor.open(*note.id);
        ASSERT_TRUE(waitUntil([&] { return !body.isLoading(); }));
        body.verticalScrollBar()->setValue(body.verticalScrollBar()->maximum() * 2 / 3);
        const int place = first();
        ASSERT_GT(place, 1'000);
        const auto rests = [&] {
            QTest::qWait(300);
            return isSame(place);
        };
        editor.resize(500, 600);
        EXPECT_TRUE(rests()) << place << " " << first();
        editor.resize(900, 500);
        EXPECT_TRUE(rests()) << place << " " << first();
        commands.trigger("view.zoomIn");
        commands.trigger("view.zoomIn");
        EXPECT_TRUE(rests()) << place << " " << first();
        commands.trigger("view.zoomReset");
        EXPECT_TRUE(rests()) << place << " " << first();
    }
}

TEST_F(LongNote, IsShownToItsEndThoughItWasTypedInWhileItWasBeingLaidOut) {
    QScrollBar& bar = *editor.body().verticalScrollBar();
    const auto isShownToItsEnd = [&] {
        return document().lastBlock().layout()->lineCount() > 0 && bar.maximum() > 10'000;
    };
    openLong("end");
    type("a");
    EXPECT_TRUE(waitUntil(isShownToItsEnd)) << bar.maximum();
    commands.trigger("view.zoomIn");
    type("b");
    EXPECT_TRUE(waitUntil(isShownToItsEnd)) << bar.maximum();
    editor.resize(500, 600);
    QTest::qWait(160);  // until the lines are others
    commands.trigger("edit.undo");
    EXPECT_TRUE(waitUntil(isShownToItsEnd)) << bar.maximum();
}

TEST_F(LongNote, KeepsWhatIsTypedBeforeAllOfItIsThere) {
    const CDNote& note = openLong("end");
    type("a");
    ASSERT_TRUE(waitUntil([&] { return !document().isEmpty(); }));
    type("b");
    EXPECT_TRUE(editor.save());
    std::string expected = longBody("end");
    expected.insert(expected.find("Day"), "ab");
    EXPECT_EQ(*note.html, expected);
}

TEST_F(LongNote, GivesWayToTheNoteThatIsChosenNext) {
    openLong("first");
    const CDNote& second = openLong("second");
    ASSERT_TRUE(waitUntil([&] { return !editor.body().isLoading(); }));
    EXPECT_EQ(html(), *second.html);
    openLong("third");
    CDNote& brief = addNote("Brief", "<p>brief</p>");
    editor.open(*brief.id);
    settle();
    EXPECT_EQ(html(), "<p>brief</p>");
}

TEST_F(LongNote, IsWrittenWhileTypingGoesOn) {
    CDNote& note = openLong("end");
    environment->startWork();
    type("one ");
    ASSERT_TRUE(waitUntil([&] {
        type("x");
        return *note.contentVersion >= 2;
    }));
    type(" last");
    EXPECT_TRUE(editor.save());
    EXPECT_EQ(*note.html, html());
    EXPECT_NE(note.html->find("one x"), std::string::npos);
    EXPECT_NE(note.html->find("x last"), std::string::npos);
    EXPECT_FALSE(hasConflict(note));
    EXPECT_FALSE(document().isModified());
}

TEST_F(LongNote, IsWrittenWholeBeforeItIsLeft) {
    CDNote& note = openLong("end");
    type("kept ");
    // Left at every moment of being written, also before the end of that was told.
    for (int milliseconds = 990; milliseconds < 1'100; milliseconds += 10) {
        QTest::qWait(milliseconds > 990 ? 10 : milliseconds);
        type("y");
        CDNote& other = addNote("Other", "<p>other</p>");
        ASSERT_TRUE(editor.open(*other.id));
        ASSERT_NE(note.html->find("kept y"), std::string::npos);
        ASSERT_TRUE(editor.open(*note.id));
    }
    EXPECT_FALSE(hasConflict(note));
}

TEST(LongNoteOnAFullDisk, WaitsUntilItCanBeWritten) {
    class OnFaultyDisk : public test::WindowFixture {
        void TestBody() override {}
    };
    test::FaultyVFS disk("longNote");
    OnFaultyDisk fixture;
    AppSetting setting = fixture.setting();
    setting.sqliteVFS = disk.name();
    fixture.open(setting);
    {
        Commands commands(fixture.environment->preferences());
        NoteEditor editor(*fixture.environment, commands);
        CDNote& note = fixture.addNote("Long", longBody("end"));
        editor.show();
        editor.open(*note.id);
        disk.fail(
            {.operation = test::FaultyVFS::Operation::write,
             .fault = test::FaultyVFS::Fault::full,
             .isLasting = true});
        QTest::keyClicks(&editor.body(), "typed ");
        ASSERT_TRUE(fixture.waitUntil(
            [&] { return editor.notice().text().contains("could not be saved"); }));
        EXPECT_FALSE(editor.close());
        disk.clear();
        EXPECT_TRUE(editor.close());
        EXPECT_NE(note.html->find("typed Day 0"), std::string::npos);
        EXPECT_FALSE(note.hasConflict);
    }
    fixture.environment.reset();  // before its disk goes
}

}  // namespace
}  // namespace tesserine::app
