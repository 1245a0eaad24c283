#include "app/editor/EditorFixture.h"
#include "app/editor/EditorPreferences.h"
#include "app/editor/NoteObject.h"
#include "app/editor/NoticeBar.h"
#include "app/editor/SpellChecker.h"
#include "app/editor/SpellingMarks.h"
#include "base/Preferences.h"
#include "core/body/LockedPassages.h"
#include "core/model/NoteEntities.h"

#include <QDialog>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

namespace tesserine::app {
namespace {

TEST(NoteObject, IsWhatItsHTMLSays) {
    const Uuid id = *Uuid::parse("0A1B2C3D-0000-4000-8000-00000000000F");
    const std::string attachment = "tesserine-attachment://" + id.text();
    using Kind = NoteObject::Kind;

    const NoteObject picture =
        NoteObject::of("<img src=\"" + attachment + "\" alt=\"Map\" width=\"40\">");
    EXPECT_EQ(picture.kind, Kind::picture);
    EXPECT_EQ(picture.attachment, id);
    EXPECT_EQ(picture.label, "Map");
    EXPECT_EQ(picture.width, 40);
    EXPECT_EQ(picture.height, 0);
    const NoteObject elsewhere = NoteObject::of("<img src=\"https://e.org/a.png\">");
    EXPECT_FALSE(elsewhere.attachment);
    EXPECT_EQ(elsewhere.source, "https://e.org/a.png");
    EXPECT_EQ(
        NoteObject::of("<a data-ts-attachment=\"" + id.text() + "\">a.txt</a>").kind, Kind::file);
    EXPECT_EQ(NoteObject::of(lockedBlock("QUJD")).source, "QUJD");
    EXPECT_EQ(NoteObject::of("<table><tr><td>x</td></tr></table>").kind, Kind::block);
    for (const char* nothing :
         {"", "words", "<br>", "<img", "<span class=\"ts-unsupported\">x</span>"}) {
        EXPECT_NE(NoteObject::of(nothing).kind, Kind::file) << nothing;
    }
}

TEST(NoteObject, TakesAnotherWidthAndKeepsTheRest) {
    EXPECT_EQ(
        withPictureWidth(
            "<img src=\"a:b\" alt=\"x &quot;y&quot;\" width=\"40\" height=\"30\">", 80),
        "<img src=\"a:b\" alt=\"x &quot;y&quot;\" width=\"80\">");
    EXPECT_EQ(withPictureWidth("<p>x</p>", 80), "<p>x</p>");
}

class LinkDialog : public test::EditorFixture {
public:
    QString notice() {
        const auto* const box = editor.findChild<QMessageBox*>("notice");
        return box == nullptr ? QString() : box->text();
    }
    /// Fills the dialog in; text that is none stays as it is.
    void answer(const char* address, const char* text, const QString& button) {
        auto* const dialog = editor.findChild<QDialog*>("linkDialog");
        ASSERT_NE(dialog, nullptr);
        dialog->findChild<QLineEdit*>("linkAddress")->setText(address);
        if (text != nullptr) dialog->findChild<QLineEdit*>("linkText")->setText(text);
        for (auto* const found : dialog->findChildren<QPushButton*>()) {
            if (found->text() == button) found->click();
        }
        settle();
    }
};

TEST_F(LinkDialog, MakesChangesAndRemovesLinks) {
    struct Case {
        const char* body;
        const char* address;
        const char* text;
        const char* button;
        const char* result;
    };
    for (const auto& [body, address, text, button, result] : {
             Case{
                 "<p>see |here|</p>",
                 "e.org",
                 nullptr,
                 "Add Link",
                 "<p>see <a href=\"https://e.org\">here</a></p>"},
             Case{
                 "<p>ask |</p>",
                 "ann@e.org",
                 "Ann",
                 "Add Link",
                 "<p>ask <a href=\"mailto:ann@e.org\">Ann</a></p>"},
             Case{
                 "<p>see |here|</p>",
                 "//e.org",
                 nullptr,
                 "Add Link",
                 "<p>see <a href=\"https://e.org\">here</a></p>"},
             Case{
                 "<p>|</p>",
                 "https://e.org/a?b=1&c=2",
                 nullptr,
                 "Add Link",
                 "<p><a href=\"https://e.org/a?b=1&amp;c=2\">https://e.org/a?b=1&amp;c=2</a></p>"},
             Case{
                 "<p><a href=\"https://a.org\">a|b <strong>c</strong></a> d</p>",
                 "https://b.org",
                 nullptr,
                 "Change Link",
                 "<p><a href=\"https://b.org\">ab <strong>c</strong></a> d</p>"},
             Case{
                 "<p><a href=\"https://a.org\"><em>a|b</em></a></p>",
                 "https://a.org",
                 "Anna",
                 "Change Link",
                 "<p><a href=\"https://a.org\"><em>Anna</em></a></p>"},
             Case{
                 "<p><a href=\"https://a.org\">ab|</a> c</p>",
                 "",
                 nullptr,
                 "Remove Link",
                 "<p>ab c</p>"},
             Case{"<p>a|b</p>", "", "", "Add Link", "<p>ab</p>"},
         }) {
        SCOPED_TRACE(body);
        openNote(body);
        const std::string before = html();
        commands.trigger("format.link");
        answer(address, text, button);
        EXPECT_EQ(html(), result);
        if (before != result) commands.trigger("edit.undo");
        EXPECT_EQ(html(), before);
    }
}

TEST_F(LinkDialog, TakesNoAddressThatANoteDoesNotKeep) {
    openNote("<p>see |here|</p>");
    for (const char* address : {"javascript:x()", "file:///etc/hosts", "tesserine://note/no"}) {
        SCOPED_TRACE(address);
        commands.trigger("format.link");
        answer(address, nullptr, "Add Link");
        EXPECT_EQ(html(), "<p>see here</p>");
        auto* const dialog = editor.findChild<QDialog*>("linkDialog");
        ASSERT_NE(dialog, nullptr) << "the address can be corrected";
        EXPECT_NE(dialog->findChild<QMessageBox*>("notice"), nullptr);
        dialog->reject();
        settle();
    }
}

TEST_F(LinkDialog, MakesALinkOfTheWordsItWasOpenedForOnly) {
    CDNote& note = openNote("<p>see |here|</p>");
    commands.trigger("format.link");
    change(note, "<p>see here</p><p>more</p>");
    answer("e.org", nullptr, "Add Link");
    const std::string linked = "<p>see <a href=\"https://e.org\">here</a></p><p>more</p>";
    EXPECT_EQ(html(), linked) << "the words stand where they stood";
    EXPECT_TRUE(editor.save());

    commands.trigger("format.link");
    change(note, "<p>first</p><p>see here</p>");
    answer("f.org", nullptr, "Change Link");
    EXPECT_EQ(html(), "<p>first</p><p>see here</p>");
    EXPECT_TRUE(notice().startsWith("The note was changed meanwhile")) << notice().toStdString();
}

TEST_F(LinkDialog, ChangesNoNoteInTheTrash) {
    CDNote& note = openNote("<p>see |here|</p>");
    commands.trigger("format.link");
    environment->notes().moveToTrash(note);
    context().save();
    answer("e.org", nullptr, "Add Link");
    EXPECT_EQ(html(), "<p>see here</p>");
    commands.trigger("format.link");
    EXPECT_EQ(editor.findChild<QDialog*>("linkDialog"), nullptr);
}

class AttachedFiles : public test::EditorFixture {};

TEST_F(AttachedFiles, AreKeptBeforeTheTextThatShowsThem) {
    CDNote& note = openNote("<p>a|b</p>");
    test::putContent(folder / "plan.txt", "plan");
    test::putContent(folder / "list.csv", "1,2");
    QMimeData dropped;
    QList<QUrl> urls;
    for (const char* name : {"plan.txt", "missing.txt", "list.csv"}) {
        urls.append(QUrl::fromLocalFile(QString::fromStdString((folder / name).string())));
    }
    dropped.setUrls(urls);
    emit editor.body().pasted(&dropped);

    // Before the second of saving is over the files are in the library already.
    EXPECT_FALSE(context().hasChanges());
    const auto attachments = environment->attachments().attachments(note);
    ASSERT_EQ(attachments.size(), 2U);
    EXPECT_EQ(*note.html, "<p>ab</p>");
    auto* const notice = editor.findChild<QMessageBox*>("notice");
    ASSERT_NE(notice, nullptr) << "the missing one is told of";
    delete notice;
    ASSERT_TRUE(editor.save());
    for (const CDAttachment* attachment : attachments) {
        EXPECT_NE(note.html->find(attachment->id->text()), std::string::npos);
    }
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), "<p>ab</p>");

    // A click on it hands a copy to the program for its type.
    commands.trigger("edit.redo");
    QString opened;
    QObject::connect(
        &editor, &NoteEditor::fileActivated, [&](const QString& path) { opened = path; });
    const auto position = document().content().text.find(AttributedText::objectCharacter);
    emit editor.body().objectActivated(static_cast<int>(position));
    EXPECT_EQ(test::contentOf(opened.toStdString()), "plan");
}

TEST_F(AttachedFiles, ComeBackWhenTheirDeletionIsUndone) {
    CDNote& note = openNote("");
    editor.title().setFocus();
    QTest::keyClicks(&editor.title(), "Lease");
    editor.body().setFocus();
    type("Line one.\n");
    ASSERT_TRUE(editor.save());
    test::putContent(folder / "plan.txt", "plan");
    QMimeData dropped;
    dropped.setUrls({QUrl::fromLocalFile(QString::fromStdString((folder / "plan.txt").string()))});
    emit editor.body().pasted(&dropped);
    ASSERT_TRUE(editor.save());
    const std::string attached = *note.html;
    type("\b");
    ASSERT_TRUE(editor.save());
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), attached);
    EXPECT_TRUE(editor.save());
    EXPECT_EQ(*note.html, attached);
}

class PictureKeys : public test::EditorFixture {};

TEST_F(PictureKeys, MakeThePictureAtTheCursorLargerAndSmaller) {
    const std::string address = "<img src=\"https://e.org/a.png\" alt=\"A\"";
    openNote("<p>a " + address + " width=\"100\" height=\"50\">|</p><p>b</p>");
    const std::string before = html();
    commands.trigger("format.pictureLarger");
    EXPECT_EQ(html(), "<p>a " + address + " width=\"110\"></p><p>b</p>");
    commands.trigger("format.pictureLarger");
    EXPECT_EQ(html(), "<p>a " + address + " width=\"121\"></p><p>b</p>") << "the cursor stays";
    commands.trigger("edit.undo");
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), before);
    ASSERT_TRUE(editor.body().objectAtCursor()) << editor.body().textCursor().position();
    for (int i = 0; i < 40; ++i) {
        commands.trigger("format.pictureSmaller");
    }
    EXPECT_EQ(html(), "<p>a " + address + " width=\"40\"></p><p>b</p>") << "it stays visible";

    editor.body().moveCursor(QTextCursor::End);
    const std::string small = html();
    commands.trigger("format.pictureLarger");
    EXPECT_EQ(html(), small) << "there is none here";
}

class Spelling : public test::EditorFixture {
public:
    void SetUp() override {
        environment->preferences().set(EditorPreferences::spellingKey, EditorPreferences::off);
        EditorFixture::SetUp();
        test::putContent(folder / "en_XX.aff", "SET UTF-8\nTRY esianrtolcdugmphbyfvkwz\n");
        test::putContent(folder / "en_XX.dic", "4\nthe\ngarden\nis\ngreen\n");
        checker = std::make_unique<SpellChecker>(
            "en_XX", QStringList{QString::fromStdString(folder.path().string())});
        editor.findChild<SpellingMarks*>()->setChecker(checker.get());
    }
    void TearDown() override { editor.findChild<SpellingMarks*>()->setChecker(nullptr); }

    QStringList marked() {
        QTest::qWait(350);
        QStringList words;
        for (const QTextEdit::ExtraSelection& mark : editor.body().extraSelections()) {
            words.append(mark.cursor.selectedText());
        }
        return words;
    }

    std::unique_ptr<SpellChecker> checker;
};

TEST_F(Spelling, MarksWordsAndNotCodeLinksAndWhatIsBeingTyped) {
    openNote(
        "<p>the gardn is GRN 4you Ctrl+N <code>grden</code> <a href=\"https://e.org\">grren</a>|</p>"
        "<pre>gren</pre>");
    EXPECT_EQ(marked(), QStringList{"gardn"});
    type(" teh");
    EXPECT_EQ(marked(), QStringList{"gardn"});
    type(" ");
    EXPECT_EQ(marked(), (QStringList{"gardn", "teh"}));

    QMenu menu;
    const int place = static_cast<int>(document().content().text.find(u"gardn")) + 2;
    emit editor.body().menuWanted(&menu, place);
    ASSERT_FALSE(menu.actions().isEmpty());
    EXPECT_EQ(menu.actions().front()->text(), "garden");
    const std::string before = html();
    menu.actions().front()->trigger();
    EXPECT_TRUE(html().starts_with("<p>the garden is")) << html();
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), before);
}

TEST_F(Spelling, CorrectsNothingInANoteThatIsAnotherByThen) {
    CDNote& note = openNote("<p>the gardn is</p>");
    QMenu menu;
    emit editor.body().menuWanted(&menu, 6);
    ASSERT_FALSE(menu.actions().isEmpty());
    change(note, "<p>green is the gardn</p>");
    menu.actions().front()->trigger();
    EXPECT_EQ(html(), "<p>green is the gardn</p>");
    change(note, "<p>the gardn is</p>");
    menu.actions().front()->trigger();
    EXPECT_EQ(html(), "<p>the garden is</p>");
}

}  // namespace
}  // namespace tesserine::app
