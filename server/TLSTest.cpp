#include "base/HTTPSession.h"
#include "base/OperationCancelled.h"
#include "base/WebSocket.h"
#include "server/HTTPFront.h"
#include "server/Service.h"
#include "sync/SyncClient.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestCertificate.h"

#include <gtest/gtest.h>

#include <optional>

namespace tesserine::server {
namespace {

using test::TestCertificate;

struct Case {
    const char* name;
    TestCertificate::Options options;
    bool isTrusted;  // by the client
    const char* host;
    bool isAccepted;
};

class TLSTest : public testing::Test {
protected:
    void listenWith(const TestCertificate& certificate) {
        test::putContent(folder_ / "certificate.pem", certificate.certificate);
        test::putContent(folder_ / "key.pem", certificate.key);
        front_.reset();
        front_.emplace(
            service_,
            HTTPFront::Options{
                .port = 0, .certificate = folder_ / "certificate.pem", .key = folder_ / "key.pem"});
    }
    std::string address(const std::string& host) const {
        return "https://" + host + ":" + std::to_string(front_->port());
    }
    /// What a device is told that signs in, syncs and listens.
    std::string syncing(const std::string& host, const std::string& trusted) {
        HTTPSession network({.trustedCertificates = trusted, .usesProxy = false});
        SyncClient client(address(host), {.session = network, .clock = clock_, .random = random_});
        client.setRetry({.attempts = 0});
        try {
            const auto code = service_.accounts().signIn("a@b.test", "secret");
            token_ = client.exchange(*code, "Desk").accessToken;
            client.setTokenSource([this](const std::stop_token&) { return token_; });
            client.state();
            return "done";
        } catch (const SyncError& error) {
            return error.what();
        }
    }
    std::string listening(const std::string& host, const std::string& trusted) {
        std::stop_source stop;
        try {
            listenToWebSocket(
                {.url = "wss" + address(host).substr(5) + "/api/v1/sync/socket",
                 .protocols = "tesserine, " + token_,
                 .trustedCertificates = trusted},
                {.opened = [] {}, .received = [&stop](std::string_view) { stop.request_stop(); }},
                stop.get_token());
        } catch (const OperationCancelled&) {
            return "done";
        } catch (const WebSocketError& error) {
            return error.kind() == WebSocketError::Kind::untrusted ? "untrusted" : error.what();
        }
    }

    test::TemporaryFolder folder_;
    SystemClock clock_;
    SecureRandom random_;
    Service service_{
        {.folder = folder_ / "data", .passwordRounds = 1}, {.clock = clock_, .random = random_}};
    std::optional<HTTPFront> front_;
    std::string token_ = "none";
};

TEST_F(TLSTest, OnlyACertificateThatVouchesForTheHostIsAccepted) {
    service_.accounts().setPassword("a@b.test", "secret");
    const std::string offline =
        "Tesserine could not reach the server. Your notes are safe on this device and will sync "
        "when you are back online.";
    const TestCertificate::Options right;
    for (const Case& one : std::vector<Case>{
             {"an address", right, true, "127.0.0.1", true},
             {"a name", right, true, "localhost", true},
             {"nobody trusts it", right, false, "127.0.0.1", false},
             {"nobody trusts it, by name", right, false, "localhost", false},
             {"another name", {.names = "DNS:other.test"}, true, "localhost", false},
             {"another address", {.names = "DNS:localhost"}, true, "127.0.0.1", false},
             {"expired", {.validFor = std::chrono::hours(-1)}, true, "127.0.0.1", false},
         }) {
        const auto certificate = TestCertificate::make(one.options);
        listenWith(certificate);
        const std::string trusted =
            one.isTrusted ? certificate.certificate : TestCertificate::make({}).certificate;
        EXPECT_EQ(syncing(one.host, trusted), one.isAccepted ? "done" : offline) << one.name;
        EXPECT_EQ(listening(one.host, trusted), one.isAccepted ? "done" : "untrusted") << one.name;
    }
}

}  // namespace
}  // namespace tesserine::server
