#include "base/HTTPSession.h"

#include "base/OperationCancelled.h"
#include "tests/support/ScriptedPeer.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <stdexcept>
#include <thread>

namespace tesserine {
namespace {

using test::httpReply;
using test::PeerAnswer;
using test::ScriptedPeer;
using Then = test::PeerAnswer::Then;

class HTTPSessionTest : public testing::Test {
protected:
    HTTPReply get(const ScriptedPeer& peer, std::size_t limit = 1000) {
        return session_.send({.url = peer.url(), .replyLimit = limit}, {});
    }

    HTTPSession session_{{.usesProxy = false}};
};

/// Zeros in a gzip stream (RFC 1952).
std::string gzipped(std::size_t zeroCount) {
    const std::string plain(zeroCount, '\0');
    std::string packed(compressBound(zeroCount) + 64, '\0');
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

TEST_F(HTTPSessionTest, RequestsTravelAsTheyAreAndKeepTheirConnection) {
    ScriptedPeer peer({
        {httpReply(200, "one", "X-Kind:  a b \r\nx-kind: second\r\n")},
        {httpReply(302, "", "Location: http://127.0.0.1:1/\r\n")},
        {httpReply(404, "gone")},
        {httpReply(204, "")},
    });
    const HTTPReply first = session_.send(
        {.method = "PUT",
         .url = peer.url("/a?b=c"),
         .headers = {{"Content-Type", "image/png"}, {"X-Empty", ""}},
         .body = std::string("\0\r\n\xFF", 4)},
        {});
    EXPECT_EQ(first.status, 200);
    EXPECT_EQ(first.body, "one");
    ASSERT_NE(first.header("X-KIND"), nullptr);
    EXPECT_EQ(*first.header("X-KIND"), "a b");
    EXPECT_EQ(first.header("x-other"), nullptr);
    EXPECT_EQ(get(peer).status, 302);
    EXPECT_EQ(get(peer).body, "gone");
    EXPECT_EQ(session_.send({.method = "POST", .url = peer.url()}, {}).status, 204);

    EXPECT_EQ(peer.connectionCount(), 1U);
    const std::string sent = peer.requests().front();
    EXPECT_TRUE(sent.starts_with("PUT /a?b=c HTTP/1.1\r\n")) << sent;
    EXPECT_NE(sent.find("\r\nContent-Type: image/png\r\n"), std::string::npos) << sent;
    EXPECT_NE(sent.find("\r\nX-Empty:\r\n"), std::string::npos) << sent;
    EXPECT_TRUE(sent.ends_with(std::string("\r\n\r\n\0\r\n\xFF", 8))) << sent;
    EXPECT_NE(peer.requests().back().find("\r\nContent-Length: 0\r\n"), std::string::npos);
}

TEST_F(HTTPSessionTest, ALongBodyGoesToTheSinkUnlessTheReplyIsAFailure) {
    ScriptedPeer peer({
        {httpReply(200, std::string(100'000, 'x'))},
        {httpReply(404, "gone")},
        {httpReply(200, std::string(100'000, 'x'))},
        {httpReply(200, "on")},
    });
    std::string taken;
    HTTPRequest request{
        .url = peer.url(), .sink = [&taken](std::string_view piece) { taken += piece; }};
    EXPECT_EQ(session_.send(request, {}).body, "");
    EXPECT_EQ(taken.size(), 100'000U);
    EXPECT_EQ(session_.send(request, {}).body, "gone");
    EXPECT_EQ(taken.size(), 100'000U);

    request.sink = [](std::string_view) { throw std::length_error("enough"); };
    EXPECT_THROW(session_.send(request, {}), std::length_error);
    EXPECT_EQ(get(peer).body, "on");
}

TEST_F(HTTPSessionTest, BrokenAndHostileRepliesAreErrors) {
    const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::string bomb = gzipped(1 << 20);
    struct Case {
        const char* what;
        PeerAnswer answer;
        HTTPError::Kind kind;
    };
    using Kind = HTTPError::Kind;
    for (const auto& [what, answer, kind] : {
             Case{"no reply", {"", Then::close}, Kind::unreachable},
             Case{"a head cut off", {"HTTP/1.1 200 OK\r\n", Then::close}, Kind::unreachable},
             Case{
                 "a body cut off",
                 {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n1234", Then::close},
                 Kind::unreachable},
             Case{"a chunk cut off", {chunked + "5\r\n12", Then::close}, Kind::unreachable},
             Case{"not HTTP", {"SSH-2.0-x\r\n", Then::close}, Kind::malformed},
             Case{"too long", {httpReply(200, std::string(1001, 'x'))}, Kind::tooLarge},
             Case{"an endless body", {chunked, Then::hang, "5\r\n12345\r\n"}, Kind::tooLarge},
             Case{
                 "endless headers",
                 {"HTTP/1.1 200 OK\r\n", Then::hang, "A: b\r\n"},
                 Kind::tooLarge},
             Case{"a bomb", {httpReply(200, bomb, "Content-Encoding: gzip\r\n")}, Kind::tooLarge},
             Case{
                 "false gzip",
                 {httpReply(200, "plain", "Content-Encoding: gzip\r\n")},
                 Kind::malformed},
         }) {
        SCOPED_TRACE(what);
        ScriptedPeer peer({answer});
        try {
            const HTTPReply reply = get(peer);
            ADD_FAILURE() << "status " << reply.status << ", " << reply.body.size() << " bytes";
        } catch (const HTTPError& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
        }
    }
    ScriptedPeer peer({{httpReply(200, gzipped(1000), "Content-Encoding: gzip\r\n")}});
    EXPECT_EQ(get(peer).body.size(), 1000U);
}

TEST_F(HTTPSessionTest, WhatMustNotHappenTwiceIsSentOnce) {
    for (const bool isRepeatable : {false, true}) {
        SCOPED_TRACE(isRepeatable);
        ScriptedPeer peer({{httpReply(200, "")}, {"", Then::close}, {httpReply(200, "again")}});
        get(peer);
        const auto post = [&] {
            return session_.send(
                {.method = "POST",
                 .url = peer.url(),
                 .body = "payment",
                 .isRepeatable = isRepeatable},
                {});
        };
        if (isRepeatable) {
            EXPECT_EQ(post().body, "again");
        } else {
            EXPECT_THROW(post(), HTTPError);
        }
        EXPECT_EQ(peer.requests().size(), isRepeatable ? 3U : 2U);
    }
}

TEST_F(HTTPSessionTest, ACancelledCallEndsAtOnceInEveryPhase) {
    struct Case {
        const char* phase;
        PeerAnswer answer;
    };
    for (const auto& [phase, answer] : {
             Case{"waiting", {"", Then::hang}},
             Case{"in the head", {"HTTP/1.1 200 OK\r\nA: b", Then::hang}},
             Case{"in the body", {"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n123", Then::hang}},
         }) {
        SCOPED_TRACE(phase);
        ScriptedPeer peer({answer});
        std::jthread caller([&](const std::stop_token& stop) {
            EXPECT_THROW(session_.send({.url = peer.url()}, stop), OperationCancelled);
        });
        peer.waitForRequests(1);
        caller.request_stop();
    }
    std::stop_source stopped;
    stopped.request_stop();
    ScriptedPeer peer({});
    EXPECT_THROW(session_.send({.url = peer.url()}, stopped.get_token()), OperationCancelled);
}

TEST_F(HTTPSessionTest, WhatIsNoRequestIsNotSent) {
    for (const char* address :
         {"", "file:///etc/passwd", "//host/", "http://a@b@c/", "https://user@host/"}) {
        try {
            session_.send({.url = address}, {});
            ADD_FAILURE() << address;
        } catch (const HTTPError& error) {
            EXPECT_EQ(error.kind(), HTTPError::Kind::badRequest) << address;
        }
    }
    ScriptedPeer peer({{httpReply(200, "")}});
    const HTTPHeaders split{{"Authorization", "Bearer a\r\nX-Injected: b"}};
    EXPECT_THROW(session_.send({.url = peer.url(), .headers = split}, {}), HTTPError);
    EXPECT_EQ(peer.connectionCount(), 0U);
}

}  // namespace
}  // namespace tesserine
