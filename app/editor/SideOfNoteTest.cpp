// What stands around the body of a note: its reminder, its words counted, its headings.

#include "app/editor/EditorFixture.h"
#include "app/editor/PanelList.h"
#include "app/editor/SidePanel.h"
#include "core/model/NoteEntities.h"

#include <QAction>
#include <QDateTimeEdit>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>

namespace tesserine::app {
namespace {

class SideOfNote : public test::EditorFixture {
public:
    QString text(const char* label) const { return editor.findChild<QLabel*>(label)->text(); }
    QStringList outline() const {
        QStringList headings;
        const auto* const list = editor.findChild<QListWidget*>("outline");
        for (int row = 0; row < list->count(); ++row) {
            headings.append(list->item(row)->text());
        }
        return headings;
    }
    /// The dialog that asks for a reminder, of which `button` is pressed.
    void answerReminder(const std::function<void(QDateTimeEdit&)>& set, const QString& button) {
        commands.trigger("note.reminder");
        auto* const dialog = editor.findChild<QDialog*>("reminderDialog");
        ASSERT_NE(dialog, nullptr);
        set(*dialog->findChild<QDateTimeEdit*>());
        for (auto* const found : dialog->findChildren<QPushButton*>()) {
            if (found->text().remove('&') == button) found->click();
        }
        settle();
    }
};

TEST_F(SideOfNote, AFileMayGoElsewhereWhileItsDeletionIsAskedAbout) {
    CDNote& note = openNote("<p>|</p>");
    const Uuid id = *environment->attachments()
                         .insert(context(), note, {.filename = "a.txt", .data = {'a'}})
                         .id;
    context().save();
    auto& panel = *editor.findChild<SidePanel*>();
    panel.open(SidePanel::Part::attachments);
    auto& files = *editor.findChild<PanelList*>("attachments");
    emit files.customContextMenuRequested(files.visualItemRect(files.item(0)).center());
    for (QAction* const action : editor.findChildren<QAction*>()) {
        if (action->text() == "Delete…") action->trigger();
    }
    auto* const box = editor.findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);

    const auto elsewhere = environment->store().newBackgroundContext();
    elsewhere->remove(*elsewhere->find<CDAttachment>(id));
    elsewhere->save();
    ASSERT_TRUE(waitUntil([&] { return context().find<CDAttachment>(id) == nullptr; }));
    for (auto* const button : box->findChildren<QPushButton*>()) {
        if (button->text().remove('&') == "Delete") button->click();
    }
    EXPECT_EQ(files.count(), 0);
}

TEST_F(SideOfNote, AReminderIsSetChangedAndTakenAway) {
    CDNote& note = openNote("<p>|</p>");
    QDateTime offered;
    answerReminder([&](QDateTimeEdit& when) { offered = when.dateTime(); }, "Cancel");
    EXPECT_EQ(offered.toString(Qt::ISODate), "2026-03-15T09:00:00Z") << "tomorrow morning";
    EXPECT_FALSE(note.reminderAt);

    answerReminder(
        [](QDateTimeEdit& when) {
            when.setDate({2026, 3, 20});
            when.setTime({17, 30});
        },
        "Set Reminder");
    ASSERT_TRUE(note.reminderAt);
    EXPECT_EQ(note.reminderAt->iso(), "2026-03-20T17:30:00.000Z");
    EXPECT_FALSE(context().hasChanges());
    answerReminder([&](QDateTimeEdit& when) { offered = when.dateTime(); }, "Remove Reminder");
    EXPECT_EQ(offered.toString(Qt::ISODate), "2026-03-20T17:30:00Z");
    EXPECT_FALSE(note.reminderAt);
}

TEST_F(SideOfNote, WordsAreCountedOfTheNoteOrOfWhatIsSelected) {
    struct Case {
        const char* body;
        const char* count;
    };
    for (const auto& [body, count] : {
             Case{"<p>|</p>", "0 words"},
             Case{"<h1>One</h1><p>don’t stop – 2 more|</p>", "5 words"},
             Case{"<p>|rock 'n' roll|, then</p>", "3 words selected"},
             Case{"<p>a|b|c</p>", "1 word selected"},
             Case{"<p>größer naïve 한국어 e\u0301te\u0301|</p>", "4 words"},
             Case{"<table><tr><td>these</td><td>too</td></tr></table><p>and two|</p>", "4 words"},
             Case{"<p>|a</p><table><tr><td>b c</td></tr></table><p>d|d</p>", "4 words selected"},
         }) {
        SCOPED_TRACE(body);
        openNote(body);
        EXPECT_TRUE(waitUntil([&, expected = QString(count)] {
            return text("wordCount") == expected;
        })) << text("wordCount").toStdString();
    }
}

TEST_F(SideOfNote, HeadingsFollowWhatIsTyped) {
    openNote("<h1>Plan</h1><p>words|</p>");
    commands.trigger("view.outline");
    EXPECT_EQ(outline(), QStringList{"Plan"});
    editor.body().setFocus();
    type("\n## Steps");
    EXPECT_TRUE(waitUntil([&] { return outline() == QStringList{"Plan", "   Steps"}; }));
    commands.trigger("format.paragraph");
    EXPECT_TRUE(waitUntil([&] { return outline() == QStringList{"Plan"}; }));
    commands.trigger("view.outline");
    EXPECT_FALSE(editor.findChild<QWidget*>("sidePanel")->isVisible());
}

}  // namespace
}  // namespace tesserine::app
