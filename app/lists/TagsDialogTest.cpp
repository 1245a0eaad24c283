#include "app/lists/TagsDialog.h"

#include "app/state/WindowFixture.h"
#include "core/model/NoteEntities.h"

#include <QLineEdit>
#include <QListWidget>
#include <QTest>
#include <QWidget>

#include <memory>
#include <vector>

namespace tesserine::app {
namespace {

class TagsDialogTest : public test::WindowFixture {
public:
    TagsDialogTest() {
        tag(plan, {"work", "garden"});
        tag(list, {"work", "home"});
        tag(other, {});
        context().save();
        dialog = std::make_unique<TagsDialog>(
            *environment, NoteActions::Notes{*plan.id, *list.id}, &window);
        dialog->show();
    }
    QListWidget& tags() { return *dialog->findChild<QListWidget*>("tagList"); }
    QLineEdit& field() { return *dialog->findChild<QLineEdit*>("tagName"); }
    void tag(CDNote& note, const std::vector<const char*>& names) {
        for (const char* name : names) {
            environment->notes().addTag(note, *environment->tags().findOrCreate(context(), name));
        }
    }
    static std::string tagsOf(const CDNote& note) {
        QStringList names;
        for (const CDTag* tag : note.tags.all()) {
            names += QString::fromStdString(*tag->name);
        }
        names.sort();
        return names.join(' ').toStdString();
    }
    QListWidgetItem& item(const char* name) {
        return *tags().findItems(name, Qt::MatchExactly).front();
    }
    void press(const char* name) {
        QListWidgetItem& pressed = item(name);
        tags().setCurrentItem(&pressed);
        QTest::keyClick(&tags(), Qt::Key_Space);
    }

    CDNote& plan = addNote("Plan");
    CDNote& list = addNote("List");
    CDNote& other = addNote("Other");
    QWidget window;
    std::unique_ptr<TagsDialog> dialog;
};

TEST_F(TagsDialogTest, ShowsWhatAllSomeAndNoneCarry) {
    tag(other, {"rest"});
    context().save();
    const TagsDialog shown(*environment, {*plan.id, *list.id, Uuid()}, &window);
    const auto state = [&](const char* name) {
        return shown.findChild<QListWidget*>()
            ->findItems(name, Qt::MatchExactly)
            .front()
            ->checkState();
    };
    EXPECT_EQ(state("work"), Qt::Checked) << "a note that is gone counts for nothing";
    EXPECT_EQ(state("garden"), Qt::PartiallyChecked);
    EXPECT_EQ(state("home"), Qt::PartiallyChecked);
    EXPECT_EQ(state("rest"), Qt::Unchecked);
    EXPECT_EQ(shown.windowTitle(), "Tags of 3 notes");
}

TEST_F(TagsDialogTest, PutsOnAndTakesOffInOneSave) {
    int saves = 0;
    QObject::connect(environment.get(), &AppEnvironment::libraryChanged, &window, [&] { ++saves; });
    press("work");    // off all of them
    press("garden");  // half, then on all of them
    QTest::keyClicks(&field(), "new one");
    QTest::keyClick(&field(), Qt::Key_Return);
    EXPECT_TRUE(dialog->isVisible()) << "Return took what was typed";
    EXPECT_EQ(tagsOf(plan), "garden work") << "nothing before it is accepted";
    QTest::keyClick(&field(), Qt::Key_Return);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(tagsOf(plan), "garden new one");
    EXPECT_EQ(tagsOf(list), "garden home new one") << "what was not touched stays";
    EXPECT_EQ(tagsOf(other), "");
    EXPECT_EQ(saves, 1);
}

TEST_F(TagsDialogTest, ATagRenamedOrDeletedMeanwhileIsTheOneThatWasChosen) {
    tag(other, {"rest"});
    context().save();
    dialog =
        std::make_unique<TagsDialog>(*environment, NoteActions::Notes{*plan.id, *list.id}, &window);
    dialog->show();
    const TagService& service = environment->tags();
    service.rename(context(), *service.find(context(), "work"), "office");
    service.rename(context(), *service.find(context(), "garden"), "plants");
    service.remove(context(), *service.find(context(), "rest"));
    context().save();
    press("work");    // off all of them
    press("garden");  // on all of them
    press("rest");
    dialog->accept();
    EXPECT_EQ(tagsOf(plan), "plants rest");
    EXPECT_EQ(tagsOf(list), "home plants rest");
    EXPECT_EQ(service.find(context(), "garden"), nullptr);
}

TEST_F(TagsDialogTest, ASecondThoughtLeavesWhatSomeCarry) {
    press("garden");  // on all
    press("garden");  // off all
    EXPECT_EQ(item("garden").checkState(), Qt::Unchecked);
    press("garden");
    EXPECT_EQ(item("garden").checkState(), Qt::PartiallyChecked);
    dialog->accept();
    EXPECT_EQ(tagsOf(plan), "garden work");
    EXPECT_EQ(tagsOf(list), "home work");
}

TEST_F(TagsDialogTest, FindsAmongTheTagsWhatIsTyped) {
    QTest::keyClicks(&field(), "GAR");
    EXPECT_FALSE(item("garden").isHidden());
    EXPECT_TRUE(item("work").isHidden());
    QTest::keyClicks(&field(), "DEN");
    QTest::keyClick(&field(), Qt::Key_Return);
    EXPECT_FALSE(item("work").isHidden());
    EXPECT_EQ(item("garden").checkState(), Qt::Checked) << "no second tag of another case";
    EXPECT_EQ(tags().count(), 4) << "three, and the offer of a new one";
    QTest::keyClicks(&field(), "ho");
    QTest::keyClick(&field(), Qt::Key_Return);
    EXPECT_EQ(item("home").checkState(), Qt::Checked) << "the first one that is found";
    QTest::keyClicks(&field(), "hom");
    EXPECT_EQ(tags().item(3)->text().toStdString(), "New tag “hom”");
    emit tags().itemClicked(tags().item(3));
    EXPECT_EQ(item("hom").checkState(), Qt::Checked);
    dialog->reject();
    EXPECT_EQ(tagsOf(list), "home work");
}

}  // namespace
}  // namespace tesserine::app
