#include "app/lists/NoteList.h"

#include "app/lists/NoteListView.h"
#include "app/lists/Pickers.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QTest>

#include <string>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class NoteListTest : public test::WindowFixture {
public:
    NoteListTest() {
        window.resize(600, 400);
        list.resize(320, 400);
        QObject::connect(&list, &NoteList::noteChosen, [this](const std::optional<Uuid>& note) {
            chosen = note;
        });
        QObject::connect(&list, &NoteList::noteOpened, [this](const Uuid& note) { opened = note; });
        window.show();
    }

    /// Newer than those before.
    CDNote& add(const std::string& title) {
        clock.advance(std::chrono::minutes(1));
        return addNote(title);
    }
    std::string titles() {
        std::string text;
        for (int row = 0; row < list.model().rowCount(); ++row) {
            text += list.model().summary(row).title.toStdString() + ";";
        }
        return text;
    }
    /// Types into the picker that is open, and takes its first row.
    std::string pickBy(const QString& letters) {
        auto* const field = window.findChild<QLineEdit*>("pickerField");
        auto* const rows = window.findChild<QListView*>("pickerList");
        if (field == nullptr || rows == nullptr) return "no picker";
        QTest::keyClicks(field, letters);
        std::string first = "nothing";
        if (rows->model()->rowCount() > 0) {
            first = rows->model()->index(0, 0).data().toString().toStdString();
        }
        QTest::keyClick(field, Qt::Key_Return);
        settle();
        return first;
    }

    QWidget window;
    NoteList list{*environment, &window};
    std::optional<Uuid> chosen;
    std::optional<Uuid> opened;
};

TEST_F(NoteListTest, ThePlaceOfANoteThatGoesIsTakenByTheNextOne) {
    const CDNote& third = add("third");
    const CDNote& second = add("second");
    const CDNote& first = add("first");
    list.showPlace({Kind::allNotes});
    EXPECT_EQ(chosen, *first.id) << "the first note is open from the start";
    list.choose(*second.id);
    list.moveToTrash();
    EXPECT_EQ(titles(), "first;third;");
    EXPECT_EQ(chosen, *third.id);
    list.moveToTrash();
    EXPECT_EQ(chosen, *first.id) << "the last line is followed by the one above";
    list.moveToTrash();
    EXPECT_EQ(chosen, std::nullopt);
    EXPECT_EQ(titles(), "");
}

TEST_F(NoteListTest, ANoteThatIsNotListedYetIsChosenOnceItIs) {
    add("Plan");
    list.showPlace({Kind::allNotes});
    list.createNote();
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(opened, chosen) << "it is to be written";
    EXPECT_EQ(list.model().rowCount(), 2);
}

TEST_F(NoteListTest, TheOrderIsKeptForTheNextStart) {
    add("beta");
    add("Äpfel");
    add("Zebra");
    list.showPlace({Kind::allNotes});
    EXPECT_EQ(titles(), "Zebra;Äpfel;beta;");
    list.setOrder(NoteOrder::title);
    ASSERT_TRUE(waitUntil([&] { return titles() == "Äpfel;beta;Zebra;"; })) << titles();
    NoteList later(*environment);
    later.showPlace({Kind::allNotes});
    ASSERT_TRUE(waitUntil([&] { return later.model().rowCount() == 3; }));
    EXPECT_EQ(later.model().summary(0).title, "Äpfel");
}

TEST_F(NoteListTest, NotebooksArePickedByAFewLettersOfTheirPath) {
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    CDNotebook& plans = environment->notebooks().findOrCreate(context(), "Plans", &work);
    environment->notebooks().findOrCreate(context(), "Plants");
    context().save();
    std::optional<Uuid> picked;
    int times = 0;
    const auto take = [&](const std::optional<Uuid>& notebook) {
        picked = notebook;
        ++times;
    };
    pickNotebook(*environment, &window, take);
    EXPECT_EQ(pickBy("wopl"), "Work / Plans");
    EXPECT_EQ(picked, *plans.id);
    pickNotebook(*environment, &window, take);
    EXPECT_EQ(pickBy("no note"), "No notebook");
    EXPECT_EQ(picked, std::nullopt);
    pickNotebook(*environment, &window, take);
    EXPECT_EQ(pickBy("xyz"), "nothing");
    EXPECT_EQ(times, 2);
}

TEST_F(NoteListTest, ANewTagIsOfferedOnlyWhereThereIsNone) {
    environment->tags().findOrCreate(context(), "Travel");
    context().save();
    std::string picked;
    const auto take = [&](const QString& name) { picked = name.toStdString(); };
    pickTag(*environment, &window, take);
    EXPECT_EQ(pickBy("travel"), "Travel") << "not a second one that differs in its capitals";
    EXPECT_EQ(picked, "Travel");
    pickTag(*environment, &window, take);
    EXPECT_EQ(pickBy("garden"), "garden");
    EXPECT_EQ(picked, "garden");
}

}  // namespace
}  // namespace tesserine::app
