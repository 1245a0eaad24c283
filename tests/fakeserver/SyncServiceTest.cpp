#include "base/Digest.h"
#include "core/services/TagService.h"
#include "server/Service.h"
#include "tests/fakeserver/SyncDevice.h"

#include <gtest/gtest.h>

namespace tesserine::test {
namespace {

/// Two computers and the real service, without sockets between them.
class SyncThroughTheService : public testing::Test {
protected:
    class Wire final : public HTTPTransport {
    public:
        explicit Wire(const std::unique_ptr<server::Service>& service) : service_(service) {}
        HTTPReply send(const HTTPRequest& request, const std::stop_token&) override {
            HTTPRequest arriving = request;
            arriving.url = request.url.substr(request.url.find("/api/"));
            return service_->answer(arriving, "192.0.2.1");
        }

    private:
        const std::unique_ptr<server::Service>& service_;
    };

    std::unique_ptr<server::Service> started() {
        return std::make_unique<server::Service>(
            server::Service::Configuration{.folder = data_, .passwordRounds = 1},
            server::Service::Environment{.clock = clock_, .random = random_});
    }
    /// Ends the service, changes its folder, and starts it again.
    void restart(const std::function<void()>& change = [] {}) {
        service_.reset();
        change();
        service_ = started();
    }

    std::string code() {
        service_->accounts().setPassword("a@b.test", "secret");
        return service_->accounts().signIn("a@b.test", "secret").value_or("");
    }

    TemporaryFolder folder_;
    FixedClock clock_{*Instant::parseISO("2026-03-14T09:15:00Z")};
    SeededRandom random_{7};
    std::filesystem::path data_ = folder_ / "data";
    std::unique_ptr<server::Service> service_ = started();
    Wire wire_{service_};
    SyncDevice a_{wire_, 1, code()};
    SyncDevice b_{wire_, 2, code()};
};

TEST_F(SyncThroughTheService, EditsPicturesTagsTasksAndDeletionsMeet) {
    Uuid plan;
    Uuid file;
    {
        StoreContext& context = a_.context();
        CDTag* const tag = TagService(a_.clock).findOrCreate(context, "home");
        CDNote& note = a_.notes.createNote(
            context, {.title = "Plan", .html = "<p>one</p><p>two</p>", .tags = {tag}});
        plan = *note.id;
        const auto picture = bytesOf("picture");
        file = *a_.attachments
                    .insert(
                        context,
                        note,
                        {.filename = "a.bin", .data = Bytes(picture.begin(), picture.end())})
                    .id;
        auto& task = context.insert<CDTask>();
        task.title = "Water the plants";
        task.labels.add(*tag);
        a_.save();
    }
    const Uuid gone = *b_.addNote("Gone", "<p>soon</p>").id;
    EXPECT_EQ(a_.sync(), "");
    EXPECT_EQ(b_.sync(), "");
    EXPECT_TRUE(static_cast<bool>(b_.context().find<CDAttachment>(file)->fileData));

    a_.write(plan, "<p>ONE</p><p>two</p>");
    b_.write(plan, "<p>one</p><p>two</p><p>three</p>");
    StoreContext& context = b_.context();
    b_.notes.deleteNote(context, *context.find<CDNote>(gone));
    b_.save();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(a_.sync(), "");
        EXPECT_EQ(b_.sync(), "");
    }
    EXPECT_EQ(a_.dump(), b_.dump());
    EXPECT_EQ(a_.note(plan)->html, "<p>ONE</p><p>two</p><p>three</p>");
    EXPECT_EQ(a_.note(gone), nullptr);
}

TEST_F(SyncThroughTheService, ADeviceThatIsSignedOutFromAfarMaySignInAgain) {
    a_.addNote("Kept", "<p>x</p>");
    server::Accounts& accounts = service_->accounts();
    const auto third = accounts.exchange(*accounts.signIn("a@b.test", "secret"), "Third");
    const auto caller = accounts.callerWith(third->accessToken);
    for (const DeviceSessionInfo& device : accounts.sessions(*caller)) {
        accounts.endSession(caller->user, device.id);
    }
    EXPECT_EQ(a_.sync(), "Your Tesserine session has ended. Sign in again to keep syncing.");
    a_.signIn(*accounts.signIn("a@b.test", "secret"));
    EXPECT_EQ(a_.sync(), "");
    EXPECT_EQ(b_.sync(), "Your Tesserine session has ended. Sign in again to keep syncing.");
}

TEST_F(SyncThroughTheService, ABackupOfTheServiceThatWasPutBackAndGrewAgainLosesNothing) {
    const auto backup = folder_ / "backup";
    const auto copy = [](const auto& from, const auto& to) {
        std::filesystem::remove_all(to);
        std::filesystem::copy(from, to, std::filesystem::copy_options::recursive);
    };
    const auto backups = [](const SyncDevice& device) {
        return std::filesystem::exists(device.library() / "Backups");
    };
    const Uuid plan = *a_.addNote("Plan", "<p>first</p>").id;
    EXPECT_EQ(a_.sync(), "");
    EXPECT_EQ(b_.sync(), "");
    restart([&] { copy(data_, backup); });
    for (int i = 0; i < 3; ++i) {
        a_.addNote("Since the backup", "<p>a" + std::to_string(i) + "</p>");
    }
    a_.write(plan, "<p>second</p>");
    EXPECT_EQ(a_.sync(), "");
    EXPECT_EQ(b_.sync(), "");
    restart();
    EXPECT_EQ(b_.sync(), "");
    EXPECT_FALSE(backups(b_)) << "a restart is no other history";

    restart([&] { copy(backup, data_); });
    SyncDevice c(wire_, 3, code());
    EXPECT_EQ(c.sync(), "");
    c.clock.advance(std::chrono::hours(1));
    for (int i = 0; i < 9; ++i) {  // the numbers go beyond what the others have seen
        c.addNote("After it", "<p>c" + std::to_string(i) + "</p>");
        EXPECT_EQ(c.sync(), "");
    }
    c.write(plan, "<p>third</p>");
    EXPECT_EQ(c.sync(), "");
    for (int round = 0; round < 3; ++round) {
        for (SyncDevice* const device : {&b_, &a_, &c}) {
            EXPECT_EQ(device->sync(), "");
        }
    }
    EXPECT_TRUE(backups(b_));
    EXPECT_EQ(a_.dump(), b_.dump());
    EXPECT_EQ(a_.dump(), c.dump());
    EXPECT_EQ(a_.context().count<CDNote>(), 1U + 3U + 9U);
    const std::string all = a_.allBodies() + b_.allBodies() + c.allBodies();
    for (const char* const body : {"<p>second</p>", "<p>third</p>"}) {
        EXPECT_NE(all.find(body), std::string::npos) << body;
    }
}

}  // namespace
}  // namespace tesserine::test
