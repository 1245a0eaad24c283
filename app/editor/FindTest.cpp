#include "app/editor/EditorFixture.h"
#include "app/editor/FindBar.h"
#include "app/editor/LinkCompletion.h"
#include "core/model/NoteEntities.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>

namespace tesserine::app {
namespace {

class FindTest : public test::EditorFixture {
public:
    FindBar& bar() { return *editor.findChild<FindBar*>("findBar"); }
    void look(const QString& words) { bar().findChild<QLineEdit*>("findField")->setText(words); }
    QString count() { return bar().findChild<QLabel*>()->text(); }
    bool becomes(const QString& count) {
        return waitUntil([&] { return this->count() == count; });
    }
    /// The words that are marked in the note.
    QStringList marked() {
        QStringList words;
        for (const auto& mark : editor.body().extraSelections()) {
            words.append(mark.cursor.selectedText());
        }
        return words;
    }
};

TEST_F(FindTest, NothingIsCoveredInTheNarrowestEditor) {
    openNote("<p>|tea</p>");
    commands.trigger("find.replace");
    look("tea");
    const QWidget* const replacing = bar().findChild<QLineEdit*>("replaceField")->parentWidget();
    const QWidget* const panel = editor.findChild<QWidget*>("sidePanel");
    for (const bool hasPanel : {false, true}) {
        SCOPED_TRACE(hasPanel);
        if (hasPanel) commands.trigger("note.versions");
        editor.resize(320, 600);
        settle();
        EXPECT_EQ(editor.width(), 320);
        EXPECT_GE(editor.body().width(), 160);
        EXPECT_TRUE(editor.rect().contains(bar().geometry()));
        EXPECT_TRUE(panel->isHidden() || editor.rect().contains(panel->geometry()));
        for (const QWidget* const line : {static_cast<const QWidget*>(&bar()), replacing}) {
            QRegion taken;
            for (const QObject* const child : line->children()) {
                const auto* const part = qobject_cast<const QWidget*>(child);
                if (part == nullptr) continue;
                EXPECT_FALSE(taken.intersects(part->geometry()))
                    << child->metaObject()->className();
                EXPECT_TRUE(line->rect().contains(part->geometry()));
                taken += part->geometry();
            }
        }
    }
}

TEST_F(FindTest, BothFieldsBeginAsTheyWereLeft) {
    openNote("<p>tea|</p><table><tbody><tr><td>x</td></tr></tbody></table><p>x</p>");
    const auto* const replacement = bar().findChild<QLineEdit*>("replaceField");
    const auto* const sought = bar().findChild<QLineEdit*>("findField");
    commands.trigger("find.replace");
    look("tea");
    bar().findChild<QLineEdit*>("replaceField")->setText("coffee");
    bar().hide();
    QTextCursor table(&document());
    table.setPosition(4);
    table.setPosition(5, QTextCursor::KeepAnchor);
    ASSERT_EQ(table.selectedText(), QString(QChar::ObjectReplacementCharacter));
    for (const char* const command : {"find.open", "find.replace"}) {
        editor.body().setTextCursor(table);
        commands.trigger(command);
        EXPECT_EQ(sought->text(), "tea") << "a table is no word";
        EXPECT_EQ(replacement->text(), "coffee");
        bar().hide();
    }
    openNote("<p>other|</p>");
    commands.trigger("find.replace");
    EXPECT_EQ(sought->text(), "tea");
    EXPECT_EQ(replacement->text(), "coffee");
}

TEST_F(FindTest, GoesFromPlaceToPlaceAndAround) {
    openNote("<p>|Tea, then tea</p><h1>TEA</h1>");
    commands.trigger("find.open");
    look("tea");
    EXPECT_EQ(count(), "1 of 3");
    commands.trigger("find.next");
    commands.trigger("find.next");
    EXPECT_EQ(count(), "3 of 3");
    EXPECT_EQ(editor.body().textCursor().selectedText(), "TEA");
    commands.trigger("find.next");
    EXPECT_EQ(count(), "1 of 3");
    commands.trigger("find.previous");
    EXPECT_EQ(count(), "3 of 3");
    look("coffee");
    EXPECT_EQ(count(), "Not found");
}

TEST_F(FindTest, ReplacesEverythingAsOneStepAndKeepsStyles) {
    const std::string body = "<p>tea <strong>tea</strong> teatea.|</p>";
    openNote(body);
    const std::string before = html();
    commands.trigger("find.replace");
    look("tea");
    bar().findChild<QLineEdit*>("replaceField")->setText("tea cup");
    bar().findChild<QPushButton*>("replaceAll")->click();
    EXPECT_EQ(html(), "<p>tea cup <strong>tea cup</strong> tea cuptea cup.</p>");
    EXPECT_EQ(count(), "Replaced 4");
    EXPECT_FALSE(editor.body().textCursor().hasSelection()) << "the next letters replace nothing";
    EXPECT_TRUE(editor.body().textCursor().atBlockEnd()) << "where one wrote before";
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), before);
}

TEST_F(FindTest, ANoBreakSpaceCountsAsASpace) {
    openNote("<p>|5\u00A0kg and 5 KG, 5\u00A0kg</p>");
    commands.trigger("find.replace");
    look("5 kg");
    EXPECT_EQ(count(), "1 of 3");
    bar().findChild<QLineEdit*>("replaceField")->setText("6 kg");
    QTest::keyClick(bar().findChild<QLineEdit*>("replaceField"), Qt::Key_Return);
    EXPECT_EQ(html(), "<p>6 kg and 5 KG, 5&nbsp;kg</p>");
    bar().findChild<QPushButton*>("replaceAll")->click();
    EXPECT_EQ(html(), "<p>6 kg and 6 kg, 6 kg</p>");
}

TEST_F(FindTest, WhatStandsInATableIsFoundAndStaysWhenAllIsReplaced) {
    const std::string table = "<table><tr><td>Onion</td><td>1&nbsp;onion</td></tr></table>";
    openNote("<p>|an onion</p>" + table + "<p>onions</p>");
    commands.trigger("find.replace");
    look("onion");
    EXPECT_EQ(count(), "1 of 3");
    commands.trigger("find.next");
    EXPECT_EQ(count(), "2 of 3");
    EXPECT_EQ(editor.body().objectAtCursor(), 9) << "the table";
    bar().findChild<QLineEdit*>("replaceField")->setText("leek");
    QTest::keyClick(bar().findChild<QLineEdit*>("replaceField"), Qt::Key_Return);
    EXPECT_EQ(count(), "3 of 3") << "it goes on";
    commands.trigger("find.previous");
    EXPECT_EQ(count(), "2 of 3");
    bar().findChild<QPushButton*>("replaceAll")->click();
    EXPECT_EQ(count(), "Replaced 2, left 1 table alone");
    EXPECT_EQ(html(), "<p>an leek</p>" + table + "<p>leeks</p>");
    look("1 onion");
    EXPECT_EQ(count(), "1 of 1");
    QTest::keyClick(bar().findChild<QLineEdit*>("replaceField"), Qt::Key_Return);
    EXPECT_TRUE(count().startsWith("A table is changed")) << count().toStdString();
}

TEST_F(FindTest, VeryManyPlacesAreCountedMarkedWhenSeenAndReplacedAsOneStep) {
    std::string body;
    for (int i = 0; i < 1'500; ++i) {
        body += "<p>word " + std::to_string(i) + " word</p>";
    }
    openNote(body);
    commands.trigger("find.replace");
    look("word");
    EXPECT_EQ(count(), "1 of 3000");
    EXPECT_LT(marked().size(), 300);
    commands.trigger("find.previous");
    EXPECT_EQ(count(), "3000 of 3000");
    EXPECT_TRUE(waitUntil([this] {
        const auto marks = editor.body().extraSelections();
        return !marks.isEmpty()
               && marks.last().cursor.position() == editor.body().textCursor().position();
    }));
    EXPECT_LT(marked().size(), 300);
    bar().findChild<QLineEdit*>("replaceField")->setText("w");
    bar().findChild<QPushButton*>("replaceAll")->click();
    EXPECT_EQ(count(), "Replaced 3000");
    EXPECT_EQ(html().find("word"), std::string::npos);
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), body);
    look("1499");
    EXPECT_EQ(count(), "1 of 1");
}

TEST_F(FindTest, WhatIsCountedAndMarkedFollowsTheNote) {
    CDNote& note = openNote("<p>tea, |coffee</p>");
    commands.trigger("find.replace");
    look("tea");
    press(Qt::Key_End, Qt::ControlModifier);
    type("tea");
    EXPECT_TRUE(becomes("2 found")) << count().toStdString();
    EXPECT_EQ(marked(), (QStringList{"tea", "tea"}));
    type("\b");
    EXPECT_TRUE(becomes("1 found")) << count().toStdString();
    EXPECT_EQ(marked(), QStringList{"tea"});

    bar().findChild<QPushButton*>("replaceAll")->click();
    EXPECT_EQ(count(), "Replaced 1");
    bar().findChild<QPushButton*>("replaceAll")->setFocus();
    QTest::keyClick(bar().findChild<QPushButton*>("replaceAll"), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(becomes("1 found")) << count().toStdString();
    EXPECT_EQ(marked(), QStringList{"tea"});
    ASSERT_TRUE(editor.save());

    environment->notes().updateNote(context(), note, {.html = "<p>Tea tea</p><p>tea</p>"});
    context().save();
    EXPECT_TRUE(waitUntil([&] { return count().contains('3'); })) << count().toStdString();
    EXPECT_EQ(marked(), (QStringList{"Tea", "tea", "tea"}));
    CDNote& other = addNote("Other", "<p>coffee</p>");
    editor.open(*other.id);
    EXPECT_TRUE(becomes("Not found")) << count().toStdString();
    EXPECT_EQ(marked(), QStringList());
}

TEST_F(FindTest, LinksToNotesWhileTyping) {
    const CDNote& garden = addNote("Garden plan");
    addNote("Groceries");
    openNote("<p>See |.</p>");
    type("[[gard");
    auto* const offered = editor.findChild<QListWidget*>("linkCompletion");
    ASSERT_TRUE(waitUntil(
        [&] { return offered->count() == 2 && offered->item(1)->text() == "New note “gard”"; }));
    EXPECT_TRUE(offered->isVisible());
    EXPECT_EQ(offered->item(0)->text(), "Garden plan");
    type("\n");
    const std::string address = NoteService::noteURL(*garden.id);
    EXPECT_EQ(html(), "<p>See <a href=\"" + address + "\">Garden plan</a>.</p>");
    // One that is not there is made.
    type(" [[New idea\n");
    EXPECT_NE(html().find("[[New idea.</p>"), std::string::npos) << "it waits for the answer";
    const CDNote* made = nullptr;
    ASSERT_TRUE(waitUntil([&] {
        made = context().fetchFirst<CDNote>({.predicate = {"title == %@", "New idea"}});
        return made != nullptr;
    }));
    settle();
    EXPECT_NE(html().find(NoteService::noteURL(*made->id) + "\">New idea</a>"), std::string::npos);
}

TEST_F(FindTest, OffersTheNoteThatIsWrittenBehindTheOthersToLinkTo) {
    addNote("Lecture 1");
    CDNote& written = openNote("<p>|</p>");
    environment->notes().updateNote(context(), written, {.title = "Lecture 2"});
    context().save();
    type("[[lec");
    const auto& offered = *editor.findChild<QListWidget*>("linkCompletion");
    ASSERT_TRUE(waitUntil([&] { return offered.count() == 3; }));
    EXPECT_EQ(offered.item(0)->text(), "Lecture 1");
    EXPECT_EQ(offered.item(1)->text(), "Lecture 2");
}

}  // namespace
}  // namespace tesserine::app
