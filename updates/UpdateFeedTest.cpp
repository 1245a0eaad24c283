#include "updates/UpdateFeed.h"

#include "updates/ReleaseNotes.h"
#include "updates/UpdateError.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

const UpdateHosts hosts{.domain = "tesserine.example", .storeHosts = {"store.example.org"}};
const std::string digest(64, 'A');

/// A feed whose entry for this platform holds `members`.
std::string feedWith(const std::string& members) {
    return R"({"platforms":{"ios":{},"macos":{)" + members + "}}}";
}
std::string feedWithDownload(
    const std::string& url, const std::string& sha256 = digest, const std::string& length = "5") {
    return feedWith(
        R"("version":"1.5","download":{"url":")" + url + R"(","sha256":")" + sha256
        + R"(","length":)" + length + "}");
}

std::string sentenceFor(const std::string& text) {
    try {
        feed::read(text, hosts);
    } catch (const UpdateError& error) {
        return error.what();
    }
    return "read";
}

TEST(UpdateFeed, GivesTheReleaseOfThisPlatform) {
    const Release release = feed::read(
        feedWith(
            R"("version":"v1.5.0","build":151,"minimumSystemVersion":"13","publishedAt":"2026-03-01T10:00:00Z",)"
            R"("minimumSupportedVersion":"1.2","releaseNotes":"- Faster","new":{"key":[1]},)"
            R"("releaseNotesURL":"https://www.tesserine.example/1.5","storeURL":"https://store.example.org/t",)"
            R"("download":{"url":"HTTPS://dl.Tesserine.example/t.dmg","sha256":")"
            + digest + R"(","length":2.0})"),
        hosts);
    EXPECT_EQ(release.stamp.version, *AppVersion::parse("1.5"));
    EXPECT_EQ(release.stamp.build, 151);
    EXPECT_EQ(release.publishedAt->iso(), "2026-03-01T10:00:00.000Z");
    EXPECT_EQ(release.minimumSystemVersion->text, "13");
    EXPECT_EQ(release.minimumSupportedVersion->text, "1.2");
    EXPECT_EQ(release.download->length, 2);
    EXPECT_EQ(release.download->sha256, std::string(64, 'a'));
    EXPECT_EQ(release.storeAddress->host, "store.example.org");

    const Release bare = feed::read(feedWith(R"("version":"2","publishedAt":"soon")"), hosts);
    EXPECT_FALSE(bare.download || bare.publishedAt || bare.stamp.build);
}

TEST(UpdateFeed, IsRefusedWithTheReason) {
    const std::string own = "https://tesserine.example/f";
    const auto malformed = [](const std::string& detail) {
        return "The update information could not be read (" + detail
               + "). Tesserine has left things as they are.";
    };
    const auto insecure = [](const std::string& address) {
        return "The update information pointed at an insecure address (" + address
               + ") and was ignored.";
    };
    const auto untrusted = [](const std::string& host) {
        return "The update information pointed at " + host
               + ", which is not a Tesserine address. Nothing was downloaded.";
    };
    const std::string shape = malformed("not the expected JSON");

    struct Case {
        std::string feed;
        std::string sentence;
    };
    const Case cases[] = {
        {"", shape},
        {"[]", shape},
        {"{}", shape},
        {R"({"platforms":[]})", shape},
        {R"({"feedVersion":"1","platforms":{"macos":{"version":"1"}}})", shape},
        {feedWith(""), shape},
        {feedWith(R"("version":1)"), shape},
        {feedWith(R"("version":"1","build":1.5)"), shape},
        {feedWith(R"("version":"1","download":{"url":"u","sha256":"s"})"), shape},
        {std::string(feed::largestSize + 1, ' '), shape},
        {R"({"platforms":{"ios":{"version":"1"}}})",
         malformed("no platforms this build understands")},
        {feedWith(R"("version":"1.x")"), malformed(R"(version "1.x" for macOS)")},
        {feedWith(R"("version":"1","build":-1)"), malformed("build -1 for macOS")},
        {feedWith(R"("version":"1","minimumSystemVersion":"new")"),
         malformed(R"(minimumSystemVersion "new" for macOS)")},
        {feedWith(R"("version":"1","storeURL":"a b")"), malformed("storeURL for macOS")},
        {feedWith(R"("version":"1","releaseNotesURL":"")"), malformed("releaseNotesURL for macOS")},
        {feedWithDownload(""), malformed("download url for macOS")},
        {feedWithDownload(own, digest, "0"), malformed("length for macOS")},
        {feedWithDownload(own, digest.substr(1)),
         malformed("sha256 for macOS is not 64 hex characters")},
        {feedWithDownload(own, std::string(64, 'g')),
         malformed("sha256 for macOS is not 64 hex characters")},
        {feedWithDownload("http://tesserine.example/f"), insecure("http://tesserine.example/f")},
        {feedWithDownload("http://evil.example/f"), insecure("http://evil.example/f")},
        {feedWithDownload("file.dmg"), insecure("file.dmg")},
        {feedWithDownload("https://eviltesserine.example/f"), untrusted("eviltesserine.example")},
        {feedWithDownload("https://a@tesserine.example/f"), untrusted("tesserine.example")},
        {feedWithDownload("https://tesserine.example.evil.example/"),
         untrusted("tesserine.example.evil.example")},
        {feedWithDownload("https://tesserine.example./f"), untrusted("tesserine.example.")},
        {feedWithDownload("https://127.0.0.1/f"), untrusted("127.0.0.1")},
        {feedWithDownload("https://[::1]/f"), untrusted("[::1]")},
        {feedWithDownload("https://0x7f000001/f"), untrusted("127.0.0.1")},
        {feedWithDownload("https://tesserine.example@evil.example/f"), untrusted("evil.example")},
        {feedWithDownload("https://evil.example:443/f"), untrusted("evil.example")},
        {feedWithDownload("https://xn--tessrine-f1a.example/f"),
         untrusted("xn--tessrine-f1a.example")},
        {feedWithDownload(R"(https://evil.example\\@tesserine.example/f)"),
         malformed("download url for macOS")},
        {feedWithDownload("https://tess\u0435rine.example/f"), malformed("download url for macOS")},
        {feedWithDownload("https:///f"), untrusted("f")},
        {feedWithDownload(own, digest, "-1"), malformed("length for macOS")},
        {feedWithDownload(own, digest, "9223372036854775808"), shape},
        {R"({"platforms":)" + std::string(100'000, '['), shape},
        {feedWith(R"("version":"1","releaseNotesURL":"https://other.example/")"),
         untrusted("other.example")},
        {feedWith(R"("version":"1","storeURL":"https://tesserine.example/")"),
         untrusted("tesserine.example")},
    };
    for (const auto& [text, sentence] : cases) {
        EXPECT_EQ(sentenceFor(text), sentence) << text.substr(0, 200);
    }
}

TEST(ReleaseNotes, FallIntoParagraphsAndBullets) {
    using Kind = ReleaseNotes::Block::Kind;
    const auto notes = ReleaseNotes::parse(
        "What is new\r\nin this release:\r\n\r\n- Faster\n* Calmer  \n• Kinder\nand more\n-not this\n");
    const std::vector<ReleaseNotes::Block> expected{
        {Kind::paragraph, "What is new in this release:"},
        {Kind::bullet, "Faster"},
        {Kind::bullet, "Calmer"},
        {Kind::bullet, "Kinder"},
        {Kind::paragraph, "and more -not this"}};
    EXPECT_EQ(notes.blocks, expected);
    EXPECT_TRUE(ReleaseNotes::parse(" \n\n").blocks.empty());
}

}  // namespace
}  // namespace tesserine
