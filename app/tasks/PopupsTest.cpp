#include "app/state/WindowFixture.h"
#include "app/tasks/MonthPicker.h"
#include "app/tasks/ProjectPicker.h"
#include "app/tasks/RecurrencePopup.h"
#include "app/tasks/WhenPopup.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>

namespace tesserine::app {
namespace {

/// Saturday, 14 March 2026, nine in the morning; weeks begin on Monday.
class PopupsTest : public test::WindowFixture {
public:
    PopupsTest() {
        window.resize(600, 500);
        window.show();
    }
    static std::string buttons(const QWidget& popup) {
        QStringList titles;
        for (const QPushButton* button : popup.findChildren<QPushButton*>()) {
            titles += button->text();
        }
        return titles.join(" | ").toStdString();
    }
    static TaskDue due(const char* date, bool hasTime) {
        return {.date = *Instant::parseISO(date), .hasTime = hasTime};
    }

    QWidget window;
};

TEST_F(PopupsTest, OffersRemindersThatAreStillToCome) {
    const auto offered = [&](const std::optional<TaskDue>& when) {
        const std::unique_ptr<WhenPopup> popup(WhenPopup::forReminder(*environment, when, &window));
        return buttons(*popup);
    };
    const std::string usual =
        "This evening  ·  Today 18:00 | Tomorrow morning  ·  Tomorrow 09:00 | No reminder";
    EXPECT_EQ(offered({}), usual);
    EXPECT_EQ(
        offered(due("2026-03-14T09:30:00Z", true)), "When it is due  ·  Today 09:30 | " + usual)
        << "an hour before has passed";
    EXPECT_EQ(
        offered(due("2026-03-16T15:00:00Z", true)),
        "When it is due  ·  Mon 16 Mar 15:00 | An hour before  ·  Mon 16 Mar 14:00 | " + usual);
    EXPECT_EQ(
        offered(due("2026-03-16T00:00:00Z", false)),
        "On the morning it is due  ·  Mon 16 Mar 09:00 | " + usual);
    EXPECT_EQ(offered(due("2026-03-01T00:00:00Z", false)), usual);
    EXPECT_EQ(
        reminderTime(due("2026-03-16T00:00:00Z", false), environment->calendar()).iso(),
        "2026-03-16T09:00:00.000Z");
}

TEST_F(PopupsTest, TakesADateInWordsAndNothingElse) {
    auto* const popup = WhenPopup::forDue(*environment, &window);
    EXPECT_EQ(buttons(*popup), "Today | Tomorrow | Next week  ·  Mon 16 Mar | No date");
    std::vector<std::optional<TaskDue>> picked;
    QObject::connect(
        popup, &WhenPopup::picked, &window, [&](const auto& when) { picked.push_back(when); });
    popup->open({}, {});
    auto* const words = popup->findChild<QLineEdit*>("whenWords");
    const auto meaning = [&] {
        return popup->findChild<QLabel*>("whenMeaning")->text().toStdString();
    };
    QTest::keyClicks(words, "friday and more");
    EXPECT_EQ(meaning(), "These words name no date.");
    QTest::keyClick(words, Qt::Key_Return);
    EXPECT_TRUE(picked.empty());
    words->setText("friday 3pm");
    EXPECT_EQ(meaning(), "Friday 20 March at 15:00");
    EXPECT_EQ(popup->findChild<MonthPicker*>()->day().iso(), "2026-03-20T00:00:00.000Z");
    QTest::keyClick(words, Qt::Key_Return);
    ASSERT_EQ(picked.size(), 1U);
    EXPECT_EQ(picked.front()->date.iso(), "2026-03-20T15:00:00.000Z");
    EXPECT_FALSE(popup->isVisible());
    settle();
}

TEST_F(PopupsTest, AMonthIsWalkedThroughByKeys) {
    MonthPicker month(environment->calendar(), clock.now(), &window);
    std::vector<std::string> picked;
    QObject::connect(&month, &MonthPicker::picked, &month, [&](Instant day) {
        picked.push_back(day.iso().substr(0, 10));
    });
    month.setDay(*Instant::parseISO("2026-01-31T12:00:00Z"));
    const auto press = [&](Qt::Key key) {
        QTest::keyClick(&month, key);
        QTest::keyClick(&month, Qt::Key_Return);
        return picked.back();
    };
    EXPECT_EQ(press(Qt::Key_PageDown), "2026-02-28") << "a shorter month";
    EXPECT_EQ(press(Qt::Key_Right), "2026-03-01");
    EXPECT_EQ(press(Qt::Key_Up), "2026-02-22");
    EXPECT_EQ(press(Qt::Key_Home), "2026-03-14");
    month.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(press(Qt::Key_Right), "2026-03-13") << "days run to the left";
}

TEST_F(PopupsTest, NoneStandsOutOfTheScreenAlsoWhenItGrows) {
    const QRect screen = window.screen()->availableGeometry();
    auto* const repetition = new RecurrencePopup(
        environment->calendar(), environment->now(), environment->now(), &window);
    repetition->open(screen.bottomRight(), RecurrenceRule{.unit = RecurrenceRule::Unit::day});
    EXPECT_TRUE(screen.contains(repetition->geometry()));
    const int height = repetition->height();
    repetition->findChild<QComboBox*>()->setCurrentText("weeks");
    EXPECT_GT(repetition->height(), height) << "now it asks for weekdays";
    EXPECT_TRUE(screen.contains(repetition->geometry()));
    repetition->close();

    auto* const when = WhenPopup::forDue(*environment, &window);
    when->open(screen.bottomRight(), {});
    EXPECT_TRUE(screen.contains(when->geometry()));
    const int before = when->height();
    when->findChild<QLineEdit*>()->setText("tomorrow");
    EXPECT_GT(when->height(), before) << "now it says what is meant";
    EXPECT_TRUE(screen.contains(when->geometry()));
    when->close();
    settle();
}

TEST_F(PopupsTest, ARepetitionIsPutTogether) {
    const Instant monday = *Instant::parseISO("2026-03-30T00:00:00Z");
    auto* const popup = new RecurrencePopup(environment->calendar(), monday, clock.now(), &window);
    std::optional<RecurrenceRule> picked;
    QObject::connect(
        popup, &RecurrencePopup::picked, &window, [&](const auto& rule) { picked = rule; });
    popup->open({}, RecurrenceRule{.unit = RecurrenceRule::Unit::week, .weekdays = {2, 5}});
    const auto meaning = [&] {
        return popup->findChild<QLabel*>("recurrenceMeaning")->text().toStdString();
    };
    EXPECT_EQ(meaning(), "Every Mon, Thu, then Thu 2 Apr");
    const auto days = popup->findChildren<QToolButton*>();
    EXPECT_EQ(days.front()->accessibleName(), "Monday") << "as the user's week begins";
    days.front()->click();
    popup->findChild<QSpinBox*>()->setValue(2);
    EXPECT_EQ(meaning(), "Every 2 weeks on Thu, then Thu 2 Apr");
    popup->findChild<QComboBox*>()->setCurrentText("months");
    EXPECT_FALSE(days.front()->isVisible());
    EXPECT_EQ(meaning(), "Every 2 months, then Sat 30 May");
    popup->findChild<QPushButton*>("takeRecurrence")->click();
    ASSERT_TRUE(picked);
    EXPECT_EQ(picked->storageString(), "unit=month;interval=2;dayOfMonth=30");
    settle();
}

TEST_F(PopupsTest, AProjectIsFoundByItsLettersOrMade) {
    const CDProject& garden = environment->projects().create(context(), "Garden plans");
    environment->projects().create(context(), "Work");
    context().save();
    const auto choose = [&](const QString& letters) {
        auto* const picker = new ProjectPicker(*environment, &window);
        std::optional<Uuid> chosen;
        QObject::connect(picker, &ProjectPicker::projectChosen, &window, [&](const Uuid& project) {
            chosen = project;
        });
        picker->open();
        QTest::keyClicks(picker->focusWidget(), letters);
        QTest::keyClick(picker->focusWidget(), Qt::Key_Return);
        settle();
        return chosen;
    };
    EXPECT_EQ(choose("gapl"), *garden.id);
    EXPECT_EQ(choose("garden plans"), *garden.id);
    const auto made = choose("Holidays");
    ASSERT_TRUE(made);
    EXPECT_EQ(context().find<CDProject>(*made)->name, "Holidays");
}

}  // namespace
}  // namespace tesserine::app
