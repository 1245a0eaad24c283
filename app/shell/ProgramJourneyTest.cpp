// One run of the whole program, from its arguments to its end.

#include "app/account/SyncStatus.h"
#include "app/editor/NoteEditor.h"
#include "app/lists/NoteList.h"
#include "app/look/Theme.h"
#include "app/pages/ImportAssistant.h"
#include "app/pages/LoadFailedPage.h"
#include "app/pages/OnboardingPage.h"
#include "app/pages/RestoreDialog.h"
#include "app/shell/MainWindow.h"
#include "app/shell/NotesPane.h"
#include "app/shell/Program.h"
#include "app/state/WindowFixture.h"
#include "base/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QDesktopServices>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>

namespace tesserine::app {
namespace {

constexpr const char* folderVariables[] = {
    "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"};

/// Takes the place of the browser.
class Browser final : public QObject {
    Q_OBJECT

public:
    Browser() { QDesktopServices::setUrlHandler("http", this, "open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler("http"); }
    Q_INVOKABLE void open(const QUrl&) {}
};

class ProgramJourney : public ::testing::Test {
protected:
    ProgramJourney() {
        for (const char* name : folderVariables) {
            before_.push_back(qgetenv(name));
            const auto place = folder / name;
            files::createPrivateFolder(place);
            qputenv(name, QByteArray::fromStdString(place.string()));
        }
    }
    ~ProgramJourney() override {
        for (std::size_t index = 0; index < before_.size(); ++index) {
            qputenv(folderVariables[index], before_[index]);
        }
    }

    /// Runs the program, and `steps` once its first page or window is there; then it is quit.
    void run(const QStringList& words, const std::function<void()>& steps) {
        QStringList all{"--library", QString::fromStdString(library.string())};
        Program program(theme_, StartOptions::read(all + words));
        QTimer::singleShot(0, qApp, [&] {
            steps();
            QApplication::quit();
        });
        EXPECT_EQ(program.run(), 0);
    }
    static bool waitUntil(const std::function<bool()>& condition) {
        return test::WindowFixture::waitUntil(condition);
    }
    template <class Widget>
    static Widget* shown() {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            auto* const found = qobject_cast<Widget*>(widget);
            if (found != nullptr && found->isVisible()) return found;
        }
        return nullptr;
    }
    static MainWindow* window() {
        EXPECT_TRUE(waitUntil([] { return shown<MainWindow>() != nullptr; }));
        return shown<MainWindow>();
    }
    static std::string titles(NoteList& list) {
        std::string text;
        for (int row = 0; row < list.model().rowCount(); ++row) {
            text += list.model().summary(row).title.toStdString() + ";";
        }
        return text;
    }
    /// The terminal program, in a process of its own.
    void terminal(const QStringList& words) {
        QProcess process;
        QStringList all{"--library", QString::fromStdString(library.string())};
        process.start(TESSERINE_PROGRAM, all + words);
        ASSERT_TRUE(process.waitForFinished()) << process.errorString().toStdString();
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }

    const test::TemporaryFolder folder;
    const std::filesystem::path library = folder / "Library";

private:
    std::vector<QByteArray> before_;
    Theme theme_{*qApp};
};

TEST_F(ProgramJourney, LeadsFromNothingToAFirstNoteByKeys) {
    QApplication::setWindowIcon({});
    run({}, [this] {
        ASSERT_TRUE(waitUntil([] { return shown<OnboardingPage>() != nullptr; }));
        EXPECT_FALSE(QApplication::windowIcon().isNull());
        EXPECT_FALSE(std::filesystem::exists(library));
        QTest::keyClick(shown<OnboardingPage>()->focusWidget(), Qt::Key_Return);
        MainWindow* const opened = window();
        ASSERT_NE(opened, nullptr);
        ASSERT_TRUE(waitUntil([&] { return opened->notes().openedNote().has_value(); }));
        EXPECT_NE(opened->notes().editor().title().text(), "") << "the welcome note teaches";
        QTest::keyClick(opened, Qt::Key_N, Qt::ControlModifier);
        QTest::keyClicks(QApplication::focusWidget(), "My first note");
        std::raise(SIGTERM);  // as when the session ends
        EXPECT_TRUE(waitUntil([] { return shown<MainWindow>() == nullptr; }));
    });
    run({}, [] {
        EXPECT_TRUE(waitUntil([] { return shown<MainWindow>() != nullptr; }));
        EXPECT_EQ(shown<OnboardingPage>(), nullptr);
        EXPECT_TRUE(waitUntil(
            [] { return titles(window()->notes().list()).starts_with("My first note;"); }));
    });
}

TEST_F(ProgramJourney, ALibraryThatCannotBeOpenedIsNeverReplaced) {
    files::createPrivateFolder(library);
    const auto file = library / TesserineStore::fileName;
    files::writeNew(file, bytesOf("this is not a library"));
    run({}, [] {
        ASSERT_TRUE(waitUntil([] { return shown<LoadFailedPage>() != nullptr; }));
        EXPECT_EQ(shown<MainWindow>(), nullptr);
        EXPECT_EQ(shown<LoadFailedPage>()->findChildren<QPushButton*>().size(), 4);
    });
    EXPECT_EQ(textOf(files::read(file, 1'000)), "this is not a library");
}

TEST_F(ProgramJourney, ALibraryThatIsMissingFromItsFolderIsNoBeginningAndComesBackFromABackup) {
    terminal({"note", "add", "--title", "Minutes"});
    terminal({"backup"});
    files::removeIfPresent(library / TesserineStore::fileName);
    run({}, [] {
        ASSERT_TRUE(waitUntil([] { return shown<LoadFailedPage>() != nullptr; }));
        shown<LoadFailedPage>()->findChild<QPushButton*>("restoreBackup")->click();
        ASSERT_TRUE(waitUntil([] { return shown<RestoreDialog>() != nullptr; }));
        QPushButton* const restore = shown<RestoreDialog>()->findChild<QPushButton*>("restore");
        ASSERT_TRUE(waitUntil([&] { return restore->isEnabled(); }));
        restore->click();
        ASSERT_NE(window(), nullptr);
        EXPECT_TRUE(waitUntil([] { return titles(window()->notes().list()) == "Minutes;"; }));
    });
}

TEST_F(ProgramJourney, AFolderWithoutALibraryGetsOneOnlyWhenItIsAskedFor) {
    files::createPrivateFolder(library);
    files::writeNew(library / TesserineStore::fileName, bytesOf("this is not a library"));
    const auto other = folder / "Other";
    files::createPrivateFolder(other);
    run({}, [&] {
        ASSERT_TRUE(waitUntil([] { return shown<LoadFailedPage>() != nullptr; }));
        emit shown<LoadFailedPage>()->folderChosen(QString::fromStdString(other.string()));
        ASSERT_TRUE(waitUntil([] { return shown<OnboardingPage>() != nullptr; }));
        EXPECT_EQ(shown<MainWindow>(), nullptr);
        EXPECT_TRUE(std::filesystem::is_empty(other));
    });
}

TEST_F(ProgramJourney, AStartInTheFolderOfALibraryOpensItAsItIs) {
    terminal({"note", "add", "--title", "Minutes"});
    const auto there = QString::fromStdString(library.string());
    run({"--library", QString::fromStdString((folder / "None").string())}, [&] {
        ASSERT_TRUE(waitUntil([] { return shown<OnboardingPage>() != nullptr; }));
        emit shown<OnboardingPage>()->freshStartChosen(there);
        ASSERT_NE(window(), nullptr);
        EXPECT_TRUE(waitUntil([] { return titles(window()->notes().list()) == "Minutes;"; }))
            << titles(window()->notes().list());
    });
}

TEST_F(ProgramJourney, WhatTheTerminalDoesIsSeenWithinASecond) {
    terminal({"note", "add", "--title", "Minutes", "--text", "first"});
    run({}, [this] {
        MainWindow* const opened = window();
        NoteList& list = opened->notes().list();
        ASSERT_TRUE(waitUntil([&] { return titles(list) == "Minutes;"; }));
        ASSERT_TRUE(waitUntil([&] { return opened->notes().openedNote().has_value(); }));

        terminal({"note", "add", "--title", "From the terminal"});
        const auto added = std::chrono::steady_clock::now();
        EXPECT_TRUE(waitUntil([&] { return titles(list) == "From the terminal;Minutes;"; }))
            << titles(list);
        EXPECT_LT(std::chrono::steady_clock::now() - added, std::chrono::seconds(1));
        EXPECT_EQ(opened->notes().editor().title().text(), "Minutes") << "what is open stays";

        terminal({"note", "edit", "Minutes", "--text", "second"});
        EXPECT_TRUE(waitUntil([&] {
            return opened->notes().editor().body().toPlainText() == "second";
        })) << "an open note that is not being typed in is shown anew";
    });
}

TEST_F(ProgramJourney, TheBrowserFindsTheWindowThatWaitsForItWhateverItsLibrary) {
    terminal({"note", "add", "--title", "Minutes"});
    qputenv("TESSERINE_SERVICE_URL", "http://127.0.0.1:1");
    run({}, [] {
        window();
        ASSERT_TRUE(waitUntil([] { return window()->findChild<SyncStatus*>() != nullptr; }));
        Browser browser;
        window()->go({.kind = Place::Kind::settings, .text = "sync"});
        const auto shows = [](const char* name) {
            return [name] {
                const auto* const found = window()->findChild<QWidget*>(name);
                return found != nullptr && found->isVisible();
            };
        };
        ASSERT_TRUE(waitUntil(shows("signIn")));
        for (int time = 0; time < 2; ++time) {  // the second sign-in takes the first one's place
            window()->findChild<QPushButton*>(time == 0 ? "signIn" : "openAgain")->click();
        }
        ASSERT_TRUE(shows("signInPending")());

        QProcess second;  // as the desktop starts it for the browser
        second.start(TESSERINE_DESKTOP_PROGRAM, {"tesserine://auth?error=weird"});
        // Starting a program may take longer on a busy machine than what happens within this one.
        EXPECT_TRUE(waitUntil(shows("signIn")) || waitUntil(shows("signIn")));
        EXPECT_TRUE(waitUntil([&] { return second.state() == QProcess::NotRunning; }));
        EXPECT_EQ(second.exitCode(), 0);
        second.kill();
    });
    qunsetenv("TESSERINE_SERVICE_URL");
}

TEST_F(ProgramJourney, BeginsAtThePlaceThatIsAskedFor) {
    terminal({"note", "add", "--title", "Minutes", "--text", "first"});
    run({"--open", "tesserine://search/first"}, [] {
        MainWindow* const opened = window();
        ASSERT_TRUE(waitUntil([&] { return opened->current().place.kind == Place::Kind::search; }));
        test::WindowFixture::settle();
        EXPECT_FALSE(opened->notes().openedNote()) << "no note is opened beside the results";
    });
}

TEST_F(ProgramJourney, HelpNeedsNoDisplay) {
    for (const char* word : {"--help", "--version"}) {
        QProcess process;
        auto surroundings = QProcessEnvironment::systemEnvironment();
        surroundings.insert("QT_QPA_PLATFORM", "xcb");
        surroundings.remove("DISPLAY");
        process.setProcessEnvironment(surroundings);
        process.start(TESSERINE_DESKTOP_PROGRAM, {word});
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }
}

TEST_F(ProgramJourney, FilesOfTheCommandLineAreOneImport) {
    terminal({"note", "add", "--title", "Minutes"});
    QStringList words{"/nowhere/none.md"};
    for (const char* name : {"one.md", "two.md"}) {
        files::writeNew(folder / name, bytesOf("# A title\n\ntext\n"));
        words << QString::fromStdString((folder / name).string());
    }
    run(words, [] {
        const auto assistants = [] {
            MainWindow* const opened = shown<MainWindow>();
            return opened != nullptr ? opened->findChildren<ImportAssistant*>().size() : 0;
        };
        EXPECT_TRUE(waitUntil([&] { return assistants() > 0; }));
        EXPECT_EQ(assistants(), 1);
        const auto* const notice = shown<MainWindow>()->findChild<QMessageBox*>("notice");
        ASSERT_NE(notice, nullptr);
        EXPECT_TRUE(notice->text().startsWith("“/nowhere/none.md” is neither"));
    });
}

}  // namespace
}  // namespace tesserine::app

#include "ProgramJourneyTest.moc"
