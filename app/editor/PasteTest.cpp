#include "app/editor/EditorFixture.h"
#include "app/editor/NoticeBar.h"
#include "app/editor/PasteRules.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/CanonicalBody.h"
#include "core/model/NoteEntities.h"
#include "tests/support/TemporaryFolder.h"

#include <QClipboard>
#include <QDropEvent>
#include <QMimeData>
#include <QRegularExpression>
#include <QUrl>

namespace tesserine::app {
namespace {

TEST(PasteRules, KeepSenseAndDropClutter) {
    struct Case {
        const char* html;
        const char* body;
        const char* leftOut;
    };
    for (const auto& [html, body, leftOut] : {
             // A browser.
             Case{
                 "<meta charset=utf-8><h2 style='color:#333'>A</h2><p class=x>b <b>c</b></p>",
                 "<h2>A</h2><p>b <strong>c</strong></p>",
                 ""},
             Case{
                 "<script>x()</script><p>a</p><form><input name=q><button>Go</button></form>",
                 "<p>a</p>",
                 "Left out: scripts and form fields."},
             Case{
                 "<p>a</p><iframe src='https://e.org'></iframe><video></video>",
                 "<p>a</p>",
                 "Left out: embedded pages and sound and video."},
             Case{
                 "<p>a</p><img src='https://e.org/a.png' alt='A'>",
                 "<p>a</p><p><img src=\"https://e.org/a.png\" alt=\"A\"></p>",
                 "1 picture stays on the web and is not loaded."},
             // A word processor: fonts, empty paragraphs, lists of its own.
             Case{
                 "<p class=MsoNormal><span style='color:black;font-family:Arial'>a</span></p>"
                 "<p class=MsoNormal>&nbsp;</p><p class=MsoNormal>b</p>",
                 "<p>a</p><p>b</p>",
                 ""},
             // A mail.
             Case{"<div><div>a</div><div><br></div><div>b</div></div>", "<p>a</p><p>b</p>", ""},
             // A spreadsheet.
             Case{
                 "<table><colgroup><col width=64></colgroup><tr><td>1</td><td>2</td></tr></table>",
                 "<table><tr><td>1</td><td>2</td></tr></table>",
                 ""},
         }) {
        SCOPED_TRACE(html);
        const paste::Pasted pasted = paste::fromHTML(html);
        EXPECT_EQ(canonicalBody(canonicalHTML(pasted.text)).html, canonicalBody(body).html);
        EXPECT_EQ(pasted.leftOut, leftOut);
    }
}

class PasterTest : public test::EditorFixture {
public:
    void pasteHTML(const std::string& html) {
        auto* const data = new QMimeData;
        data->setHtml(QString::fromStdString(html));
        QApplication::clipboard()->setMimeData(data);
        editor.body().paste();
    }
};

TEST_F(PasterTest, PicturesInAnAddressBecomeAttachments) {
    CDNote& note = openNote("<p>a|</p>");
    pasteHTML("x <img alt='dot' src='data:image/gif;base64,"
              "R0lGODlhAQABAIAAAAAAAP///yH5BAEAAAAALAAAAAABAAEAAAIBRAA7'>");
    ASSERT_TRUE(editor.save());
    const auto attachments = environment->attachments().attachments(note);
    ASSERT_EQ(attachments.size(), 1U);
    EXPECT_EQ(*attachments.front()->mimeType, "image/gif");
    EXPECT_NE(
        note.html->find("tesserine-attachment://" + attachments.front()->id->text()),
        std::string::npos);
    EXPECT_EQ(note.html->find("data:"), std::string::npos);
}

TEST_F(PasterTest, PicturesAndFilesStandApartFromTheWordsAroundThem) {
    const auto file = [this](const char* name, const std::string& content) {
        test::putContent(folder / name, content);
        return QUrl::fromLocalFile(QString::fromStdString((folder / name).string()));
    };
    const Bytes picture = png({8, 8}, Qt::red);
    const std::string bytes(picture.begin(), picture.end());
    const QList<QUrl> files{file("a.png", bytes), file("b.png", bytes), file("c.txt", "c")};
    struct Case {
        const char* before;
        const char* after;  // without what tells the objects from each other
    };
    for (const auto& [before, after] : {
             Case{"<p>|</p>", "<p><img></p><p><img></p><div></div>"},
             Case{"<p>ab|</p>", "<p>ab</p><p><img></p><p><img></p><div></div>"},
             Case{"<p>a|b</p>", "<p>a</p><p><img></p><p><img></p><div></div><p>b</p>"},
         }) {
        SCOPED_TRACE(before);
        openNote(before);
        auto* const data = new QMimeData;
        data->setUrls(files);
        QApplication::clipboard()->setMimeData(data);
        editor.body().paste();
        QString seen = QString::fromStdString(html());
        seen.remove(QRegularExpression("(?<=<img|<div)[^>]*|(?<=>)c.txt"));
        EXPECT_EQ(seen.toStdString(), after);
    }
}

TEST_F(PasterTest, FilesDroppedAnywhereOnTheNoteAreAttachedAndStayWhereTheyAre) {
    test::putContent(folder / "c.txt", "c");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString((folder / "c.txt").string()))});
    data.setText("file:c.txt");
    auto* const tag = editor.findChild<QLineEdit*>("tagName");
    for (QWidget* const place :
         {static_cast<QWidget*>(&editor.title()),
          static_cast<QWidget*>(tag),
          editor.body().viewport()}) {
        CDNote& note = openNote("<p>a|</p>");
        const QPoint middle = place->rect().center();
        constexpr Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(middle, actions, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(place, &enter);
        QDropEvent drop(middle, actions, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(place, &drop);
        EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
        EXPECT_EQ(editor.title().text(), "Plan");
        EXPECT_EQ(tag->text(), "");
        EXPECT_EQ(environment->attachments().attachments(note).size(), 1U);
    }
}

TEST_F(PasterTest, FilesOfOtherNotesAreTakenAlong) {
    CDNote& source = addNote("Source");
    const CDAttachment& file =
        environment->attachments().insert(context(), source, {.filename = "a.txt", .data = {'a'}});
    context().save();
    CDNote& note = openNote("<p>|</p>");
    pasteHTML(AttachmentService::bodyElement(file));
    ASSERT_TRUE(editor.save());
    const auto attachments = environment->attachments().attachments(note);
    ASSERT_EQ(attachments.size(), 1U);
    EXPECT_EQ(*note.html, AttachmentService::bodyElement(*attachments.front()));
}

TEST_F(PasterTest, TellsWhatWasLeftOut) {
    openNote("<p>a|</p>");
    pasteHTML("<p>b</p><script>c()</script>");
    EXPECT_EQ(html(), "<p>ab</p>");
    EXPECT_EQ(editor.notice().text(), "Left out: scripts.");
}

TEST_F(PasterTest, PlainTextStaysPlain) {
    openNote("<p>|word|</p>");
    auto* const data = new QMimeData;
    data->setHtml("<h1>b</h1>");
    data->setText("b\nc");
    QApplication::clipboard()->setMimeData(data);
    commands.trigger("edit.pastePlain");
    EXPECT_EQ(html(), "<p>b</p><p>c</p>");
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), "<p>word</p>");
    QApplication::clipboard()->setText("https://e.org/x");
    editor.body().selectAll();
    commands.trigger("edit.pastePlain");
    EXPECT_EQ(html(), "<p><a href=\"https://e.org/x\">word</a></p>");
}

TEST_F(PasterTest, ColumnsOfPlainTextAreKeptAsTheyAreShown) {
    QApplication::clipboard()->setText("a\tb\n\tc");
    for (const char* body : {"<p>|</p>", "<ul><li>x|</li></ul>", "<pre>x|</pre>"}) {
        SCOPED_TRACE(body);
        const CDNote& note = openNote(body);
        editor.body().paste();
        ASSERT_TRUE(editor.save());
        const std::string shown = html();
        EXPECT_EQ(*note.html, shown);
        EXPECT_EQ(shown.find('\t') != std::string::npos, shown.starts_with("<pre>"));
    }
}

TEST_F(PasterTest, ACopyPastedBackIsTheSame) {
    const std::string body =
        "<h1><span style=\"color: #d64545\">a</span></h1><ul><li>b<ul><li><strong>c</strong></li></ul></li></ul>"
        "<table><tr><td>d</td></tr></table><pre>e\nf</pre>";
    openNote(body);
    editor.body().selectAll();
    editor.body().copy();
    editor.body().cut();
    EXPECT_NE(html(), body);
    editor.body().paste();
    EXPECT_EQ(canonicalBody(html()).html, body);
}

TEST_F(PasterTest, WhatWasSelectedByLinesStandsBetweenTheLinesWhereItIsPasted) {
    openNote("<p>|one</p><h2>|two</h2><ul><li>three</li></ul>");
    editor.body().cut();
    const std::string rest = "<h2>two</h2><ul><li>three</li></ul>";
    ASSERT_EQ(html(), rest);
    struct Case {
        int position;
        const char* result;
    };
    for (const auto& [position, result] : {
             Case{0, "<p>one</p><h2>two</h2><ul><li>three</li></ul>"},
             Case{2, "<h2>tw</h2><p>one</p><h2>o</h2><ul><li>three</li></ul>"},
             Case{4, "<h2>two</h2><p>one</p><ul><li>three</li></ul>"},
             Case{9, "<h2>two</h2><ul><li>three</li></ul><p>one</p>"},
         }) {
        SCOPED_TRACE(position);
        QTextCursor cursor(&document());
        cursor.setPosition(position);
        editor.body().setTextCursor(cursor);
        editor.body().paste();
        EXPECT_EQ(html(), result);
        commands.trigger("edit.undo");
        EXPECT_EQ(html(), rest);
    }
}

}  // namespace
}  // namespace tesserine::app
