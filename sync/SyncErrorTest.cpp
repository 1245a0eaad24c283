#include "sync/SyncReply.h"
#include "sync/SyncRetryPolicy.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

const Instant now = *Instant::parseISO("2026-03-10T10:00:00Z");

/// The sentence of a reply, with the predicates: "… [retry] [later]".
std::string meaning(const HTTPReply& reply, After500 after500 = After500::mayRepeat) {
    try {
        checkReply(reply, now, after500);
    } catch (const SyncError& error) {
        return std::string(error.what()) + (error.isRetryable() ? " [retry]" : "")
               + (error.isTransient() ? " [later]" : "");
    }
    return "fine";
}

TEST(SyncReply, EveryStatusMeansOneThing) {
    struct Case {
        int status;
        const char* body;
        const char* meaning;
    };
    for (const auto& [status, body, expected] : {
             Case{200, "", "fine"},
             Case{299, "<html>", "fine"},
             Case{0, "", "The server sent something Tesserine could not read (no status)."},
             Case{302, "", "The server returned an error (302)."},
             Case{
                 401,
                 R"({"error":{"message":"Go away."}})",
                 "Your Tesserine session has ended. Sign in again to keep syncing."},
             Case{404, "not JSON", "The server returned an error (404)."},
             Case{404, R"({"error":{"message":"Gone."},"detail":"d"})", "Gone."},
             Case{409, R"({"error":{"message":""},"detail":"Clash."})", "Clash."},
             Case{429, "", "The server returned an error (429). [retry] [later]"},
             Case{500, "", "The server returned an error (500). [retry] [later]"},
             Case{501, "", "The server returned an error (501). [later]"},
             Case{503, "", "The server returned an error (503). [retry] [later]"},
             Case{
                 507,
                 "",
                 "Your Tesserine attachment storage is full. Delete some attachments in Settings > "
                 "Storage, then try again. Nothing already uploaded is lost. [later]"},
             Case{507, R"({"detail":"Full."})", "Full. [later]"},
         }) {
        SCOPED_TRACE(status);
        EXPECT_EQ(meaning({.status = status, .body = body}), expected);
    }
    EXPECT_EQ(
        meaning({.status = 500}, After500::isFinal), "The server returned an error (500). [later]");
    EXPECT_EQ(
        meaning({.status = 502}, After500::isFinal),
        "The server returned an error (502). [retry] [later]");
}

TEST(SyncReply, RetryAfterIsReadInSecondsOrAsADate) {
    struct Case {
        const char* header;
        std::optional<double> seconds;
    };
    for (const auto& [header, seconds] : {
             Case{" 5 ", 5},
             Case{"12.4", 12.4},
             Case{"Tue, 10 Mar 2026 10:00:05 GMT", 5},
             Case{"Tue, 10 Mar 2026 11:00:05 GMT+01:00", 5},
             Case{"Tue, 10 Mar 2026 09:00:00 GMT", 0},
             Case{"", std::nullopt},
             Case{"-5", std::nullopt},
             Case{"+5", std::nullopt},
             Case{"0x10", std::nullopt},
             Case{"nan", std::nullopt},
             Case{"1e3", std::nullopt},
             Case{"5 seconds", std::nullopt},
             Case{"Tue, 10 Mar 2026 10:00:05 GMT and more", std::nullopt},
             Case{"Tue, 40 Mar 2026 10:00:05 GMT", std::nullopt},
         }) {
        SCOPED_TRACE(header);
        const auto delay = parseRetryAfter(header, now);
        EXPECT_EQ(delay ? std::optional(delay->count()) : std::nullopt, seconds);
    }
}

TEST(SyncRetryPolicy, DelaysDoubleUpToTheirCeilingsAndJitterTakesHalfAtMost) {
    test::SeededRandom random(1);
    SyncRetryPolicy policy{.jitter = false};
    const auto delay = [&](int retries, std::optional<double> asked = std::nullopt) {
        return policy.delay(retries, asked ? std::optional(Seconds(*asked)) : std::nullopt, random)
            .count();
    };
    EXPECT_EQ(delay(0), 0.5);
    EXPECT_EQ(delay(4), 8);
    EXPECT_EQ(delay(6), 30);
    EXPECT_EQ(delay(5000), 30);
    EXPECT_EQ(delay(0, 5), 5);
    EXPECT_EQ(delay(0, 600), 60);
    EXPECT_EQ(delay(4, 0), 0);
    EXPECT_EQ(delay(0, parseRetryAfter(std::string(400, '9'), now)->count()), 60);

    policy.jitter = true;
    double least = 8;
    double most = 0;
    for (int i = 0; i < 1000; ++i) {
        least = std::min(least, delay(4));
        most = std::max(most, delay(4));
    }
    EXPECT_GE(least, 4);
    EXPECT_LT(least, 4.1);
    EXPECT_GT(most, 7.9);
    EXPECT_LE(most, 8);
}

TEST(SyncRetryPolicy, ARequestIsRetriedAsOftenAsTheAttemptsSay) {
    const SyncRetryPolicy policy;
    EXPECT_TRUE(policy.allows(SyncError::offline(), 4));
    EXPECT_FALSE(policy.allows(SyncError::offline(), 5));
    for (const SyncError& final :
         {SyncError::signedOut(),
          SyncError::malformed("x"),
          SyncError::keychainUnavailable(),
          SyncError::server({.status = 507})}) {
        EXPECT_FALSE(policy.allows(final, 0)) << final.what();
    }
}

}  // namespace
}  // namespace tesserine
