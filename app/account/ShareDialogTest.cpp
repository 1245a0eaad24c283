#include "app/account/ShareDialog.h"

#include "app/state/SyncFixture.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

namespace tesserine::app {
namespace {

class ShareDialogTest : public test::SyncFixture {
public:
    std::optional<HTTPReply> answerInstead(const HTTPRequest& request) override {
        if (request.url.find("/share") == std::string::npos) return std::nullopt;
        if (failure) return failure;
        if (request.method == "POST") {
            isShared = true;
            return HTTPReply{
                .status = 200,
                .body = R"({"id":"1","token":"t","url":"https://notes.example.org/shared/t",
                            "created_at":"2026-03-14T09:00:00Z"})"};
        }
        if (request.method == "DELETE") {
            isShared = false;
            return HTTPReply{.status = 204};
        }
        return HTTPReply{
            .status = 200, .body = isShared ? R"({"shared":true})" : R"({"shared":false})"};
    }

    void openDialog() {
        dialog = new ShareDialog(*environment, *addNote("Packing list").id, nullptr);
        dialog->show();
    }
    void closeWidgets() override { delete dialog; }

    QPushButton& button(const char* name) { return *dialog->findChild<QPushButton*>(name); }
    QLineEdit& link() { return *dialog->findChild<QLineEdit*>("shareLink"); }
    std::string stateText() {
        return dialog->findChild<QLabel*>("shareState")->text().toStdString();
    }

    QPointer<ShareDialog> dialog;
    std::atomic<bool> isShared = false;
};

TEST_F(ShareDialogTest, ALinkIsMadeCopiedAndTakenBack) {
    signIn();
    openDialog();
    ASSERT_TRUE(waitUntil([this] { return button("createLink").isVisible(); }));
    EXPECT_FALSE(link().isVisible());
    EXPECT_FALSE(button("stopSharing").isVisible());

    button("createLink").click();
    ASSERT_TRUE(waitUntil([this] { return link().isVisible(); }));
    button("copyLink").click();
    EXPECT_EQ(QApplication::clipboard()->text(), "https://notes.example.org/shared/t");

    button("stopSharing").click();
    ASSERT_TRUE(waitUntil([this] { return !isShared && button("createLink").isVisible(); }));
    EXPECT_FALSE(link().isVisible());
    EXPECT_EQ(link().text(), "");
}

TEST_F(ShareDialogTest, ANoteThatIsSharedAlreadyCanBeTakenBackAtOnce) {
    signIn();
    isShared = true;
    openDialog();
    ASSERT_TRUE(waitUntil([this] { return button("stopSharing").isVisible(); }));
    EXPECT_EQ(button("createLink").text(), "New Link");

    control().stop();
    failure = HTTPReply{.status = 400};
    button("stopSharing").click();
    ASSERT_TRUE(waitUntil([this] { return button("createLink").isVisible(); }));
    EXPECT_TRUE(button("stopSharing").isVisible()) << "to be tried again";
}

TEST_F(ShareDialogTest, WhatIsTakenBackIsAlsoWhenTheDialogIsClosedAtOnce) {
    signIn();
    isShared = true;
    openDialog();
    ASSERT_TRUE(waitUntil([this] { return button("stopSharing").isVisible(); }));
    button("stopSharing").click();
    delete dialog;
    environment->waitForBackground();
    EXPECT_FALSE(isShared);
}

TEST_F(ShareDialogTest, GoesWithItsNote) {
    signIn();
    openDialog();
    CDNote& note = *context().fetch<CDNote>().front();
    environment->notes().moveToTrash(note);
    ASSERT_TRUE(environment->save(nullptr));
    EXPECT_TRUE(waitUntil([this] { return dialog.isNull(); }));
}

TEST_F(ShareDialogTest, WhatTheServiceSaysIsShownAndCanBeTriedAgain) {
    signIn();
    control().stop();
    failure = HTTPReply{
        .status = 404, .body = R"({"error":{"message":"Sync the note first, then share it."}})"};
    openDialog();
    ASSERT_TRUE(waitUntil([this] { return button("createLink").isVisible(); }));
    EXPECT_EQ(stateText(), "Sync the note first, then share it.");
}

}  // namespace
}  // namespace tesserine::app
