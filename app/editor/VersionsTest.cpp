#include "app/editor/ComparisonView.h"
#include "app/editor/EditorFixture.h"
#include "app/editor/NoticeBar.h"
#include "app/editor/PanelList.h"
#include "app/editor/Printing.h"
#include "core/model/NoteEntities.h"

#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPrinter>
#include <QPushButton>
#include <QToolButton>

#include <filesystem>

namespace tesserine::app {
namespace {

class VersionsTest : public test::EditorFixture {
public:
    ComparisonView* comparison() { return editor.findChild<ComparisonView*>(); }
    static void choose(QWidget& widget, const QString& title) {
        for (auto* button : widget.findChildren<QPushButton*>()) {
            if (button->text() == title) return button->click();
        }
        FAIL() << "no button " << title.toStdString();
    }
    /// What is marked in one of the versions.
    static QStringList marked(ComparisonView& view, const char* side) {
        QStringList words;
        for (const auto& mark : view.findChild<BodyEdit*>(side)->extraSelections()) {
            words.append(mark.cursor.selectedText());
        }
        return words;
    }
    PanelList& list(const char* name) { return *editor.findChild<PanelList*>(name); }
    QStringList entries(const char* name) {
        QStringList texts;
        for (int i = 0; i < list(name).count(); ++i) {
            texts.append(list(name).item(i)->text().trimmed());
        }
        return texts;
    }

    /// A note that was changed elsewhere while it was being written.
    CDNote& noteInConflict() {
        CDNote& note = openNote("<p>one two|</p>");
        type(" mine");
        environment->notes().updateNote(context(), note, {.html = "<p>one theirs</p>"});
        context().save();
        EXPECT_TRUE(editor.save());
        return note;
    }
};

TEST_F(VersionsTest, AnEarlierVersionIsComparedAndRestored) {
    CDNote& note = openNote("<p>red house|</p>");
    type(" and garden");
    editor.save();
    commands.trigger("note.versions");
    ASSERT_EQ(list("versions").count(), 1);
    emit list("versions").chosen(list("versions").item(0)->data(Qt::UserRole));
    ASSERT_NE(comparison(), nullptr);
    EXPECT_EQ(marked(*comparison(), "leftVersion"), QStringList());
    EXPECT_EQ(marked(*comparison(), "rightVersion"), QStringList{" and garden"});
    choose(*comparison(), "Restore This Version");
    EXPECT_EQ(*note.html, "<p>red house</p>");
    EXPECT_EQ(html(), "<p>red house</p>");
}

/// In the note as it is, and after one has been in another note meanwhile.
TEST_F(VersionsTest, RestoringAVersionIsAStepToUndo) {
    const std::string earlier = "<h1>House</h1><ul><li>red</li><li>old</li></ul>";
    const std::string later = "<h1>House</h1><p>blue <strong>roof</strong></p>"
                              "<table><tbody><tr><td>x</td></tr></tbody></table><p>end</p>";
    for (const bool isLeft : {false, true}) {
        SCOPED_TRACE(isLeft);
        CDNote& note = openNote(earlier);
        change(note, later);
        ASSERT_TRUE(waitUntil([&] { return html() == *note.html; }));
        const std::string before = html();
        editor.body().moveCursor(QTextCursor::End);
        type("!");
        editor.save();
        const std::string typed = html();
        commands.trigger("note.versions");
        const int oldest = list("versions").count() - 1;
        emit list("versions").chosen(list("versions").item(oldest)->data(Qt::UserRole));
        choose(*comparison(), "Restore This Version");
        settle();
        ASSERT_EQ(*note.html, earlier);
        EXPECT_FALSE(editor.body().isModified());
        EXPECT_EQ(editor.window()->focusWidget(), &editor.body());
        if (isLeft) {
            editor.open(*addNote("Other").id);
            editor.open(*note.id);
        }

        commands.trigger("edit.undo");
        EXPECT_EQ(html(), typed);
        ASSERT_TRUE(editor.save());
        EXPECT_EQ(*note.html, typed);
        commands.trigger("edit.undo");
        EXPECT_EQ(html(), before) << "what was typed before it can be undone as well";
        commands.trigger("edit.redo");
        commands.trigger("edit.redo");
        EXPECT_EQ(html(), earlier);
        commands.trigger("edit.undo");
        EXPECT_EQ(html(), typed);
    }
}

TEST_F(VersionsTest, UndoBringsBackNoPlaceOfAFileThatWasDeleted) {
    CDNote& note = addNote("Plan", "<p>words</p>");
    const CDAttachment& file =
        environment->attachments().insert(context(), note, {.filename = "a.txt", .data = {'a'}});
    const std::string link = "tesserine-attachment://" + file.id->text();
    note.html = "<p>words</p><p><img src=\"" + link + "\"></p>";
    context().save();
    editor.open(*note.id);
    commands.trigger("view.outline");
    for (auto* button : editor.findChildren<QToolButton*>()) {
        if (button->accessibleName() == "Attachments") button->click();
    }
    ASSERT_EQ(entries("attachments"), QStringList{"a.txt"});
    emit list("attachments")
        .customContextMenuRequested(
            list("attachments").visualItemRect(list("attachments").item(0)).center());
    for (auto* menu : editor.findChildren<QMenu*>()) {
        for (QAction* action : menu->actions()) {
            if (action->text() == "Delete…") action->trigger();
        }
    }
    ASSERT_NE(editor.findChild<QMessageBox*>(), nullptr);
    choose(*editor.findChild<QMessageBox*>(), "Delete");
    settle();
    EXPECT_EQ(entries("attachments"), QStringList());
    EXPECT_EQ(html().find(link), std::string::npos);
    EXPECT_EQ(html(), *note.html);
    commands.trigger("edit.undo");
    EXPECT_EQ(html().find(link), std::string::npos);
}

TEST_F(VersionsTest, AConflictEndsAsTheReaderSays) {
    struct Case {
        const char* choice;
        const char* html;
        std::size_t notes;
    };
    for (const auto& [choice, body, notes] : {
             Case{"Use this version", "<p>one theirs</p>", 1},
             Case{"Keep my version", "<p>one two mine</p>", 1},
             Case{"Keep both", "<p>one two mine</p>", 2},
         }) {
        SCOPED_TRACE(choice);
        const std::size_t before = environment->notes().liveNoteCount(context());
        CDNote& note = noteInConflict();
        EXPECT_TRUE(note.hasConflict);
        ASSERT_FALSE(editor.notice().text().isEmpty());
        choose(editor.notice(), "Compare…");
        ASSERT_NE(comparison(), nullptr);
        EXPECT_EQ(marked(*comparison(), "leftVersion"), QStringList{"theirs"});
        choose(*comparison(), choice);
        EXPECT_FALSE(note.hasConflict);
        EXPECT_EQ(html(), body);
        EXPECT_EQ(environment->notes().liveNoteCount(context()) - before, notes);
        EXPECT_EQ(editor.notice().text(), "");
        settle();
    }
}

TEST_F(VersionsTest, TheVersionThatWasComparedIsTheOneThatIsUsed) {
    CDNote& note = noteInConflict();
    choose(editor.notice(), "Compare…");
    auto& newer = context().insert<CDNoteRevision>();
    newer.createdAt = clock.now() + std::chrono::minutes(1);
    newer.html = "<p>never seen</p>";
    newer.reason = "conflict";
    newer.note = &note;
    context().save();
    choose(*comparison(), "Use this version");
    EXPECT_EQ(html(), "<p>one theirs</p>");
    settle();
    EXPECT_EQ(editor.focusWidget(), &editor.body()) << "the button that had the keys is gone";
}

TEST_F(VersionsTest, ReturnOverTwoVersionsChangesNeither) {
    CDNote& note = noteInConflict();
    choose(editor.notice(), "Compare…");
    QTest::keyClick(comparison()->findChild<BodyEdit*>("leftVersion"), Qt::Key_Return);
    EXPECT_FALSE(comparison()->isVisible());
    EXPECT_TRUE(note.hasConflict) << "it is still to be settled";
    EXPECT_EQ(*note.html, "<p>one two mine</p>");
    settle();

    commands.trigger("note.versions");
    const int versions = list("versions").count();
    emit list("versions").chosen(list("versions").item(versions - 1)->data(Qt::UserRole));
    ASSERT_NE(comparison(), nullptr);
    QTest::keyClick(comparison(), Qt::Key_Return);
    EXPECT_FALSE(comparison()->isVisible());
    EXPECT_EQ(*note.html, "<p>one two mine</p>");
}

TEST_F(VersionsTest, AConflictThatOthersFindOrSettleIsSaidInTheOpenNote) {
    const Uuid id = *openNote("<p>the same words|</p>").id;
    const auto setConflict = [&](bool isInConflict) {
        const auto elsewhere = environment->store().newBackgroundContext();
        elsewhere->find<CDNote>(id)->hasConflict = isInConflict;
        elsewhere->save();
    };
    setConflict(true);
    EXPECT_TRUE(waitUntil([this] {
        return editor.notice().text().startsWith("This note was changed in two places.");
    }));
    EXPECT_EQ(html(), "<p>the same words</p>");
    setConflict(false);
    EXPECT_TRUE(waitUntil([this] { return editor.notice().text().isEmpty(); }));
}

TEST_F(VersionsTest, ThePanelShowsHeadingsLinksAndFiles) {
    CDNote& note = openNote("<h1>|A</h1><p>x</p><h2>B</h2>");
    addNote("Linking", "<p><a href=\"" + NoteService::noteURL(*note.id) + "\">x</a></p>");
    environment->attachments().insert(context(), note, {.filename = "a.txt", .data = {'a'}});
    context().save();
    commands.trigger("view.outline");
    EXPECT_EQ(entries("outline"), (QStringList{"A", "B"}));
    EXPECT_TRUE(list("outline").hasFocus());
    emit list("outline").chosen(list("outline").item(1)->data(Qt::UserRole));
    EXPECT_EQ(editor.body().textCursor().position(), 4);
    commands.trigger("view.backlinks");
    ASSERT_TRUE(waitUntil([&] { return entries("backlinks") == QStringList{"Linking"}; }));
    for (auto* button : editor.findChildren<QToolButton*>()) {
        if (button->accessibleName() == "Attachments") button->click();
    }
    EXPECT_EQ(entries("attachments"), QStringList{"a.txt"});
}

TEST_F(VersionsTest, AFileIsShownWhenItHasComeFromAnotherDevice) {
    const Bytes bytes = png({8, 4}, Qt::red);
    CDNote& note = addNote("Plan", "");
    CDAttachment& attachment =
        environment->attachments().insert(context(), note, {.filename = "a.png", .data = bytes});
    const Uuid id = *attachment.id;
    note.html = "<p><img src=\"tesserine-attachment://" + id.text() + "\"></p>";
    attachment.fileData = std::nullopt;
    context().save();
    editor.open(*note.id);
    commands.trigger("view.outline");
    for (auto* button : editor.findChildren<QToolButton*>()) {
        if (button->accessibleName() == "Attachments") button->click();
    }
    const auto remark = [this] {
        const auto* const row = list("attachments").item(0);
        return row == nullptr ? QString() : row->data(Qt::AccessibleDescriptionRole).toString();
    };
    const auto showsPicture = [this] {
        const QImage shown = editor.body().viewport()->grab().toImage();
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const QColor color = shown.pixelColor(x, y);
                if (color.red() > 200 && color.green() + color.blue() < 60) return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(waitUntil([&] { return remark() == "Not downloaded yet"; }))
        << remark().toStdString();
    EXPECT_FALSE(showsPicture());

    const auto elsewhere = environment->store().newBackgroundContext();
    elsewhere->find<CDAttachment>(id)->fileData = bytes;
    elsewhere->save();
    EXPECT_TRUE(waitUntil([&] { return remark().endsWith("bytes"); })) << remark().toStdString();
    EXPECT_TRUE(waitUntil(showsPicture));
}

TEST_F(VersionsTest, TagsArePutOnAndTakenAway) {
    CDNote& note = openNote("<p>|</p>");
    auto* const field = editor.findChild<QLineEdit*>("tagName");
    field->setText("garden, Spring");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(note.tags.all().size(), 2U);
    EXPECT_FALSE(context().hasChanges());
    QTest::keyClick(field, Qt::Key_Backspace);
    ASSERT_EQ(note.tags.all().size(), 1U);
    EXPECT_EQ(*note.tags.all().front()->name, "garden");
}

TEST_F(VersionsTest, ANoteBecomesAPDFOfSeveralPages) {
    std::string body;
    for (int i = 0; i < 120; ++i) {
        body += "<ul><li>item</li></ul><p>words</p>";
    }
    Pictures pictures(*environment);
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    const std::filesystem::path file = folder / "note.pdf";
    printer.setOutputFileName(QString::fromStdString(file.string()));
    ASSERT_TRUE(print({"Plan", body}, pictures, printer));
    const std::string content = test::contentOf(file);
    EXPECT_TRUE(content.starts_with("%PDF"));
    EXPECT_EQ(content.find("/Count 1\n"), std::string::npos) << "one page";
}

TEST_F(VersionsTest, APDFTakesThePlaceOfAnotherWhenItIsWhole) {
    Pictures pictures(*environment);
    const std::filesystem::path file = folder / "note.pdf";
    test::putContent(file, "the one before");
    std::filesystem::create_directory(folder / "note.pdf.part");  // nothing can be written there
    EXPECT_FALSE(writePDF({"Plan", "<p>words</p>"}, pictures, file));
    EXPECT_EQ(test::contentOf(file), "the one before");

    std::filesystem::remove(folder / "note.pdf.part");
    EXPECT_TRUE(writePDF({"Plan", "<p>words</p>"}, pictures, file));
    EXPECT_TRUE(test::contentOf(file).starts_with("%PDF"));
    EXPECT_FALSE(std::filesystem::exists(folder / "note.pdf.part"));
}

}  // namespace
}  // namespace tesserine::app
