#include "app/assistant/ActionReview.h"
#include "app/assistant/AskPanel.h"
#include "app/assistant/AssistantFixture.h"
#include "app/assistant/AssistantSettings.h"
#include "app/assistant/UpdateSettings.h"
#include "app/assistant/WhatIsSent.h"
#include "app/look/Theme.h"
#include "app/testing/WidgetFaultsFixture.h"

#include <QApplication>
#include <QScrollArea>

namespace tesserine::app {
namespace {

class AssistantLayoutTest : public test::AssistantFixture {
public:
    AssistantLayoutTest() {
        CDNote& written = addNote("Lisbon", "<p>The hotel in Lisbon was by the river.</p>");
        environment->notebooks().findOrCreatePath(context(), {"Health"});
        context().save();
        note = *written.id;
    }

    /// Everything that the assistant shows, each as it is once there is something to show.
    void forPages(const std::function<void(QWidget& page)>& judge) {
        const auto show = [&](std::unique_ptr<QWidget> page, QSize size) {
            SCOPED_TRACE(page->metaObject()->className());
            page->setAttribute(Qt::WA_DeleteOnClose, false);
            if (!size.isEmpty()) page->resize(size);
            page->show();
            environment->waitForBackground();
            settle();
            judge(*page);
        };
        show(scrolling(makeAssistantSettings(*environment, nullptr)), settingsSize);
        show(scrolling(makeUpdateSettings(*environment, nullptr)), settingsSize);
        show(std::make_unique<AskPanel>(*environment), {360, 520});
        const WhatIsSent::Request request{.body = R"({"messages":[]})", .destination = "there"};
        show(std::make_unique<WhatIsSent>(*environment, request, nullptr), {});
        show(
            std::make_unique<ActionReview>(*environment, note, NoteAction::summarize, nullptr), {});
    }

    /// As the settings show it.
    static std::unique_ptr<QWidget> scrolling(QWidget* form) {
        auto area = std::make_unique<QScrollArea>();
        area->setWidget(form);
        area->setWidgetResizable(true);
        area->setFocusPolicy(Qt::NoFocus);
        area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        return area;
    }

    static constexpr QSize settingsSize{620, 500};
    const Theme theme{*qApp};
    Uuid note;
};

TEST_F(AssistantLayoutTest, NothingIsCutWithLargeLettersInEitherDirection) {
    test::forReaders({1.0, 1.4}, [this](double) {
        forPages([](QWidget& page) {
            EXPECT_EQ(test::layoutFaults(page), "");
            EXPECT_LE(page.minimumSizeHint().width(), 884) << "of a small screen";
            EXPECT_LE(page.minimumSizeHint().height(), 560);
        });
    });
}

TEST_F(AssistantLayoutTest, EveryControlHasANameThatCanBeHeard) {
    forPages([](QWidget& page) { EXPECT_EQ(test::namelessControls(page), ""); });
}

}  // namespace
}  // namespace tesserine::app
