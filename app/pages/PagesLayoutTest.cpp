#include "app/look/PageParts.h"
#include "app/look/Theme.h"
#include "app/pages/AboutDialog.h"
#include "app/pages/ExportAssistant.h"
#include "app/pages/ImportAssistant.h"
#include "app/pages/LoadFailedPage.h"
#include "app/pages/OnboardingPage.h"
#include "app/pages/RestoreDialog.h"
#include "app/pages/SettingsPage.h"
#include "app/state/WindowFixture.h"
#include "app/testing/WidgetFaultsFixture.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QListWidget>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

/// Every page, at the size it is opened with.
class PagesLayoutTest : public test::WindowFixture {
public:
    ~PagesLayoutTest() override { environment->waitForBackground(); }

    struct Page {
        const char* name;
        std::function<std::unique_ptr<QWidget>()> make;
        double largest = 1.4;  // letters for which there is room, beside the usual ones
    };
    std::vector<Page> pages() {
        std::vector<Page> all = {
            {"onboarding",
             [] {
                 auto page = std::make_unique<OnboardingPage>("/home/ada/.local/share/Tesserine");
                 page->resize(780, 560);  // of a small screen
                 return page;
             },
             2.0},
            {"load failed",
             [this] {
                 auto page = std::make_unique<LoadFailedPage>(LoadFailedPage::Failure{
                     "/home/ada/.local/share/Tesserine",
                     "The library could not be opened: the file is damaged.",
                     setting()});
                 page->resize(780, 560);
                 return page;
             }},
            {"restore", [this] { return std::make_unique<RestoreDialog>(setting()); }},
            {"about", [] { return std::make_unique<AboutDialog>(nullptr); }},
            {"import", [this] { return std::make_unique<ImportAssistant>(*environment, nullptr); }},
            {"export",
             [this] {
                 return std::make_unique<ExportAssistant>(
                     *environment, QString::fromStdString(folder.path().string()), nullptr);
             }},
        };
        for (const char* area : {"general", "search", "storage", "exchange"}) {
            all.push_back({area, [this, area] {
                               auto page = std::make_unique<SettingsPage>(*environment);
                               page->showPage(area);
                               page->resize(820, 600);
                               return page;
                           }});
        }
        return all;
    }
};

TEST_F(PagesLayoutTest, NothingIsCutWithUsualAndWithLargeLettersInEitherDirection) {
    const Theme theme(*qApp);
    test::forReaders({1.0, 1.4, 2.0}, [this](double scale) {
        for (const auto& [name, make, largest] : pages()) {
            if (scale > largest) continue;
            SCOPED_TRACE(name);
            const auto page = make();
            page->show();
            environment->waitForBackground();
            settle();
            EXPECT_EQ(test::layoutFaults(*page), "");
        }
    });
}

TEST_F(PagesLayoutTest, EveryControlHasANameThatCanBeHeard) {
    for (const auto& [name, make, largest] : pages()) {
        SCOPED_TRACE(name);
        const auto page = make();
        page->show();
        environment->waitForBackground();
        settle();
        EXPECT_EQ(test::namelessControls(*page), "");
    }
}

}  // namespace
}  // namespace tesserine::app
