#include "app/pages/ChoiceCard.h"
#include "app/pages/LoadFailedPage.h"
#include "app/pages/OnboardingPage.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <filesystem>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

std::string textOf(const QWidget& page, const char* label) {
    return page.findChild<QLabel*>(label)->text().toStdString();
}

TEST(OnboardingPage, BeginsByKeysAloneAndWritesNothingItself) {
    const test::TemporaryFolder home;
    const std::filesystem::path library = home / "Library";
    OnboardingPage page(library);
    std::vector<std::string> chosen;
    QObject::connect(&page, &OnboardingPage::freshStartChosen, &page, [&](const QString& folder) {
        chosen.push_back("fresh " + folder.toStdString());
    });
    QObject::connect(&page, &OnboardingPage::importChosen, &page, [&](const QString& folder) {
        chosen.push_back("import " + folder.toStdString());
    });
    QObject::connect(&page, &OnboardingPage::signInChosen, &page, [&](const QString& folder) {
        chosen.push_back("sign in " + folder.toStdString());
    });
    page.show();
    QTest::keyClick(page.focusWidget(), Qt::Key_Return);
    QTest::keyClick(page.focusWidget(), Qt::Key_Tab);
    QTest::keyClick(page.focusWidget(), Qt::Key_Space);
    QTest::keyClick(page.focusWidget(), Qt::Key_Tab);
    QTest::keyClick(page.focusWidget(), Qt::Key_Space);
    EXPECT_EQ(
        chosen,
        (std::vector<std::string>{
            "fresh " + library.string(),
            "import " + library.string(),
            "sign in " + library.string()}));
    EXPECT_FALSE(std::filesystem::exists(library));
}

TEST(OnboardingPage, ShowsWhereTheLibraryWillBeInAFewLetters) {
    const std::filesystem::path home = QDir::homePath().toStdString();
    EXPECT_EQ(textOf(OnboardingPage(home / "Notes"), "libraryFolder"), "~/Notes");
    EXPECT_EQ(textOf(OnboardingPage("/srv/notes"), "libraryFolder"), "/srv/notes");
    const std::string neighbour = home.string() + "2/Notes";
    EXPECT_EQ(textOf(OnboardingPage(neighbour), "libraryFolder"), neighbour);
}

TEST(LoadFailedPage, SaysWhyAndReturnIsTheWayThatHarmsNothing) {
    LoadFailedPage page({"/srv/notes", "The library could not be opened. It is damaged."});
    int quits = 0;
    QObject::connect(&page, &LoadFailedPage::quitAsked, &page, [&] { ++quits; });
    page.show();
    EXPECT_EQ(
        textOf(page, "loadFailedSentence"), "The library could not be opened. It is damaged.");
    std::string buttons;
    for (QPushButton* button : page.findChildren<QPushButton*>()) {
        buttons += button->text().toStdString() + "\n";
    }
    QTest::keyClick(page.focusWidget(), Qt::Key_Return);
    EXPECT_EQ(buttons, "Show in Folder\nChoose Another Folder\nQuit\n");
    EXPECT_EQ(quits, 1) << "the way that cannot harm anything is the usual one";
}

}  // namespace
}  // namespace tesserine::app
