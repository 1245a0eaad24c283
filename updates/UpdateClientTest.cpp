#include "updates/UpdateClient.h"

#include "base/Digest.h"
#include "base/Encoding.h"
#include "base/OperationCancelled.h"
#include "tests/support/TemporaryFolder.h"
#include "updates/UpdateError.h"
#include "updates/UpdateOffer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <map>
#include <string>

namespace tesserine {
namespace {

/// A web of a few pages.
class SmallWeb final : public HTTPTransport {
public:
    HTTPReply send(const HTTPRequest& request, const std::stop_token&) override {
        visited += request.url + " ";
        HTTPReply reply = pages.at(request.url)();
        if (request.sink && reply.status == 200) {
            for (const char byte : reply.body) {
                request.sink({&byte, 1});
            }
            reply.body.clear();
            if (isCut) throw HTTPError(HTTPError::Kind::unreachable, "connection lost");
        }
        return reply;
    }
    void redirect(const std::string& from, const std::string& location) {
        pages[from] = [location] {
            return HTTPReply{.status = 302, .headers = {{"Location", location}}};
        };
    }
    /// Gives the beginning of a page, then loses the connection.
    void cut(const std::string& url, const std::string& beginning) {
        pages[url] = [beginning] { return HTTPReply{.status = 200, .body = beginning}; };
        isCut = true;
    }
    void put(const std::string& url, const std::string& body, int status = 200) {
        pages[url] = [=] { return HTTPReply{.status = status, .body = body}; };
        isCut = false;
    }

    std::map<std::string, std::function<HTTPReply()>> pages;
    std::string visited;
    bool isCut = false;
};

/// Files of this process grow no longer than `bytes`, as on a disk that is full.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit lower{.rlim_cur = bytes, .rlim_max = before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &lower);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit before_{};
    sighandler_t handler_;
};

class UpdateClientTest : public testing::Test {
protected:
    static constexpr const char* feedURL = "https://tesserine.example/appcast.json";
    static constexpr const char* fileURL = "https://dl.tesserine.example/a/Tesserine%201.dmg";

    std::string fetched() {
        try {
            return client_.fetch().stamp.version.text;
        } catch (const UpdateError& error) {
            return error.what();
        }
    }
    std::string downloaded(const std::string& announced) {
        try {
            const auto bytes = bytesOf(announced);
            return client_
                .download(
                    {.address = *WebAddress::parse(fileURL),
                     .sha256 = sha256Hex(bytes),
                     .length = static_cast<std::int64_t>(bytes.size())},
                    folder_.path())
                .filename()
                .string();
        } catch (const UpdateError& error) {
            return error.what();
        }
    }
    std::size_t fileCount() const {
        const std::filesystem::directory_iterator entries(folder_.path());
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    test::TemporaryFolder folder_;
    SmallWeb web_;
    UpdateClient client_{
        {.session = web_,
         .hosts = {.domain = "tesserine.example"},
         .feedURL = feedURL,
         .site = "tesserine.example"}};
};

TEST_F(UpdateClientTest, ReadsTheFeedThroughTrustedRedirectsOnly) {
    const std::string feed = R"({"platforms":{"macos":{"version":"1.5"}}})";
    web_.put(feedURL, feed);
    EXPECT_EQ(fetched(), "1.5");

    web_.redirect(feedURL, "/new/appcast.json");
    web_.redirect("https://tesserine.example/new/appcast.json", "https://www.tesserine.example/f");
    web_.put("https://www.tesserine.example/f", feed);
    EXPECT_EQ(fetched(), "1.5");

    web_.visited.clear();
    web_.redirect(feedURL, "http://tesserine.example/f");
    EXPECT_EQ(fetched(), UpdateError::insecureTransport("http://tesserine.example/f").what());
    web_.redirect(feedURL, "https://evil.example/f");
    EXPECT_EQ(fetched(), UpdateError::untrustedHost("evil.example").what());
    EXPECT_EQ(web_.visited, std::string(feedURL) + " " + feedURL + " ");

    web_.redirect(feedURL, feedURL);
    EXPECT_EQ(
        fetched(), UpdateError::malformed("it was redirected too often, or to nowhere").what());
}

TEST_F(UpdateClientTest, SaysWhyThereIsNoFeed) {
    web_.put(feedURL, "", 503);
    EXPECT_EQ(fetched(), "The update server returned an error (503). Try again later.");
    web_.pages[feedURL] = []() -> HTTPReply {
        throw HTTPError(HTTPError::Kind::unreachable, "no route");
    };
    EXPECT_EQ(fetched(), UpdateError::offline().what());
    web_.pages[feedURL] = []() -> HTTPReply { throw OperationCancelled(); };
    EXPECT_EQ(fetched(), "The update check was cancelled.");
}

TEST_F(UpdateClientTest, KeepsAWholeFileWithTheRightDigestOnly) {
    web_.put(fileURL, "release");
    EXPECT_EQ(downloaded("release"), "Tesserine 1.dmg");
    EXPECT_EQ(test::contentOf(folder_ / "Tesserine 1.dmg"), "release");
    EXPECT_EQ(downloaded("release"), "Tesserine 1 2.dmg");
    EXPECT_EQ(fileCount(), 2U);

    EXPECT_EQ(
        downloaded("releasf"),
        "The downloaded file does not match what Tesserine was expecting, so it has been "
        "discarded. You can download Tesserine from tesserine.example instead.");
    EXPECT_EQ(
        downloaded("releas"),
        "The download was 7 bytes, but 6 bytes were expected, so it has been discarded.");
    EXPECT_EQ(
        downloaded("release!"),
        "The download was 7 bytes, but 8 bytes were expected, so it has been discarded.");
    web_.redirect(fileURL, "http://dl.tesserine.example/f");
    EXPECT_EQ(
        downloaded("release"),
        UpdateError::insecureTransport("http://dl.tesserine.example/f").what());
    EXPECT_EQ(fileCount(), 2U) << "nothing else is left";
}

TEST_F(UpdateClientTest, LeavesNothingOfADownloadThatIsCutAnywhere) {
    test::putContent(folder_ / "Tesserine 1.dmg", "the program that runs");
    const std::string release(1'000, 'r');
    for (std::size_t percent = 0; percent < 100; percent += 10) {
        web_.cut(fileURL, release.substr(0, release.size() * percent / 100));
        EXPECT_EQ(downloaded(release), UpdateError::offline().what()) << percent;
        EXPECT_EQ(fileCount(), 1U) << percent;
    }
    web_.pages[fileURL] = []() -> HTTPReply { throw OperationCancelled(); };
    EXPECT_EQ(downloaded(release), "The update check was cancelled.");
    EXPECT_EQ(fileCount(), 1U);
    EXPECT_EQ(test::contentOf(folder_ / "Tesserine 1.dmg"), "the program that runs");

    web_.put(fileURL, release);
    EXPECT_EQ(downloaded(release), "Tesserine 1 2.dmg");
}

TEST_F(UpdateClientTest, ADiskThatFillsUpWhileDownloadingIsSaidAndLeavesNothing) {
    std::string release(4'000, 'r');
    web_.put(fileURL, release);
    const FileSizeLimit limit(1'000);
    EXPECT_EQ(
        downloaded(release),
        UpdateError::cannotSave(folder_.path().string(), "tesserine.example").what());
    EXPECT_EQ(fileCount(), 0U);
}

TEST_F(UpdateClientTest, IsNotHinderedByWhatAKilledProgramLeft) {
    test::putContent(folder_ / ".Tesserine 1.dmg-abcdef.part", "half");
    test::putContent(folder_ / ".Tesserine 1.dmg-ghijkl.part", "being written");
    std::filesystem::last_write_time(
        folder_ / ".Tesserine 1.dmg-abcdef.part",
        std::filesystem::file_time_type::clock::now() - std::chrono::hours(2));
    web_.put(fileURL, "release");
    EXPECT_EQ(downloaded("release"), "Tesserine 1.dmg");
    EXPECT_EQ(fileCount(), 2U);
    const auto mode = std::filesystem::status(folder_ / "Tesserine 1.dmg").permissions();
    EXPECT_EQ(mode, std::filesystem::perms(0600));
}

TEST_F(UpdateClientTest, SaysWhenTheFileCannotBeSaved) {
    web_.put(fileURL, "release");
    std::filesystem::remove(folder_.path());
    test::putContent(folder_.path(), "a file");
    EXPECT_EQ(
        downloaded("release"),
        UpdateError::cannotSave(folder_.path().string(), "tesserine.example").what());
}

TEST(UpdateOffer, IsMadeForNewerReleasesThatRunHere) {
    const auto version = [](const char* text) { return *AppVersion::parse(text); };
    const UpdateSituation now{.current = {version("1.4"), 120}, .systemVersion = version("14.2")};
    const auto offered = [&](const Release& release, const UpdateSituation& situation) {
        const auto offer = offerOf(release, situation);
        return !offer ? "none" : offer->isRequired ? "required" : "offered";
    };
    Release release{.stamp = {version("1.5"), 150}};
    EXPECT_STREQ(offered(release, now), "offered");
    EXPECT_STREQ(offered({.stamp = now.current}, now), "none");

    UpdateSituation skipping = now;
    skipping.skipped = "1.5";
    EXPECT_STREQ(offered(release, skipping), "none");
    release.minimumSupportedVersion = version("1.4.1");
    EXPECT_STREQ(offered(release, skipping), "required");

    release.minimumSystemVersion = version("15");
    EXPECT_STREQ(offered(release, now), "none");
    release.minimumSystemVersion = version("14.2.0");
    EXPECT_STREQ(offered(release, now), "required");
}

}  // namespace
}  // namespace tesserine
