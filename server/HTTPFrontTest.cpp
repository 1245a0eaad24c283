#include "server/HTTPFront.h"

#include "base/Digest.h"
#include "base/HTTPSession.h"
#include "base/UserError.h"
#include "server/Service.h"
#include "sync/SyncClient.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <Poco/Exception.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>

#include <algorithm>
#include <array>
#include <thread>

namespace tesserine::server {
namespace {

/// The whole way: client, sockets of the loopback, service, disk.
class HTTPFrontTest : public testing::Test {
protected:
    HTTPFrontTest() {
        service_.accounts().setPassword("a@b.test", "secret");
        const auto code = service_.accounts().signIn("a@b.test", "secret");
        const TokenResponse tokens = client_.exchange(*code, "Desk");
        client_.setTokenSource([tokens](const std::stop_token&) { return tokens.accessToken; });
    }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(front_.port()); }

    test::TemporaryFolder folder_;
    SystemClock clock_;
    SecureRandom random_;
    Service service_{
        {.folder = folder_.path() / "data", .quotas = {.file = 1'000'000}, .passwordRounds = 1},
        {.clock = clock_, .random = random_}};
    HTTPFront front_{service_, {.port = 0}};
    HTTPSession network_{{.usesProxy = false}};
    SyncClient client_{url(), {.session = network_, .clock = clock_, .random = random_}};
};

TEST_F(HTTPFrontTest, RecordsAndFilesComeBackAsTheyWere) {
    const std::string data("\0\r\n\xFF whole", 10);
    const std::string digest = sha256Hex(bytesOf(data));
    client_.uploadBlob(bytesOf(data), digest, "application/octet-stream");
    EXPECT_EQ(client_.downloadBlob(digest), data);
    const SyncPush push{
        .id = Uuid::random(random_), .kind = "note", .payload = {{"title", "Grüße ✓"}}};
    EXPECT_EQ(client_.push({push}).results.at(0).status, "applied");
    EXPECT_EQ(client_.changes(0, 10).changes.at(0).payload, push.payload);
    client_.revokeShare(push.id);
    EXPECT_EQ(network_.send({.url = url() + "/nowhere"}, {}).status, 404);
}

TEST_F(HTTPFrontTest, ABodyBeyondTheLimitIsRefused) {
    const std::string data(1'000'001, 'x');
    try {
        client_.setRetry({.attempts = 0});
        client_.uploadBlob(bytesOf(data), sha256Hex(bytesOf(data)), "a/b");
        ADD_FAILURE() << "was taken";
    } catch (const SyncError& error) {
        const bool isRefused = error.kind() == SyncError::Kind::offline  // cut off while sending
                               || error.problem().status == 413;
        EXPECT_TRUE(isRefused) << error.what();
    }
    EXPECT_EQ(client_.blobUsage().files, 0);
}

TEST_F(HTTPFrontTest, NoSecondServiceSharesTheCallsOfTheFirst) {
    EXPECT_THROW(HTTPFront(service_, {.port = front_.port()}), UserError);
}

/// What the service answers to raw bytes, and how many of them it took.
struct Conversation {
    std::string reply;
    std::size_t sent = 0;
};

Conversation say(int port, const std::string& head, const std::string& piece, std::size_t pieces) {
    Poco::Net::StreamSocket socket(
        Poco::Net::SocketAddress("127.0.0.1", static_cast<Poco::UInt16>(port)));
    socket.setReceiveTimeout(Poco::Timespan(10, 0));
    Conversation talk;
    try {
        socket.sendBytes(head.data(), static_cast<int>(head.size()));
        for (std::size_t i = 0; i < pieces; ++i) {
            socket.sendBytes(piece.data(), static_cast<int>(piece.size()));
            talk.sent += piece.size();
        }
    } catch (const Poco::Exception&) {}  // it listens no more
    try {
        std::array<char, 4'096> buffer{};
        const int count = socket.receiveBytes(buffer.data(), static_cast<int>(buffer.size()));
        talk.reply.assign(buffer.data(), static_cast<std::size_t>(std::max(count, 0)));
    } catch (const Poco::Exception&) {}  // cut off while sending
    return talk;
}

TEST_F(HTTPFrontTest, AGigabyteIsNeitherReadNorKept) {
    const std::string start = "POST /api/v1/auth/refresh HTTP/1.1\r\nHost: a\r\n";
    const std::string announced = start + "Content-Length: 1073741824\r\n\r\n";
    EXPECT_NE(say(front_.port(), announced, "", 0).reply.find(" 413 "), std::string::npos);

    const std::string chunk = "10000\r\n" + std::string(65'536, 'x') + "\r\n";
    constexpr std::size_t chunks = (std::size_t{1} << 30) / 65'536;
    const std::string endless = start + "Transfer-Encoding: chunked\r\n\r\n";
    const Conversation talk = say(front_.port(), endless, chunk, chunks);
    EXPECT_LT(talk.sent, std::size_t{64} << 20);
    EXPECT_EQ(network_.send({.url = url() + "/nowhere"}, {}).status, 404) << "and it goes on";
}

TEST_F(HTTPFrontTest, DevicesAtTheSameTimeGetNumbersOfTheirOwn) {
    constexpr int devices = 4;
    constexpr int changes = 20;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < devices; ++i) {
            threads.emplace_back([this] {
                for (int j = 0; j < changes; ++j) {
                    client_.push({{.id = Uuid::random(random_), .kind = "tag"}});
                }
            });
        }
    }
    const ChangesResponse page = client_.changes(0, 1'000);
    ASSERT_EQ(page.changes.size(), static_cast<std::size_t>(devices * changes));
    for (std::size_t i = 0; i < page.changes.size(); ++i) {
        EXPECT_EQ(page.changes[i].seq, static_cast<std::int64_t>(i) + 1);
    }
}

}  // namespace
}  // namespace tesserine::server
