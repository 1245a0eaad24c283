#include "base/JSON.h"
#include "sync/WireCoding.h"
#include "sync/WireDate.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

constexpr const char* id = "6f9619ff-8b86-d011-b42d-00cf4fc964ff";

std::string record(const std::string& members) {
    return R"({"id":")" + std::string(id) + R"(","kind":"note","updated_at":"2025-03-01T10:00:00Z")"
           + members + "}";
}

TEST(WireRecords, ARecordWithItsRequiredKeysOnlyTakesTheDefaults) {
    const auto decoded = wire::decodeText<SyncRecord>(record(R"(,"rev":null,"unknown":[1])"));
    EXPECT_EQ(
        json::write(wire::encode(decoded)),
        R"({"id":"6f9619ff-8b86-d011-b42d-00cf4fc964ff","kind":"note","rev":0,"seq":0,)"
        R"("deleted":false,"payload":{},"updated_at":"2025-03-01T10:00:00.000Z"})");
}

TEST(WireRecords, WhatIsNotTheRecordIsRefusedWithTheKeyThatIsWrong) {
    struct Case {
        std::string text;
        const char* why;
    };
    for (const auto& [text, why] : {
             Case{"[]", "not an object"},
             Case{"{", "not the expected JSON"},
             Case{std::string(200, '[') + std::string(200, ']'), "not the expected JSON"},
             Case{R"({"kind":"note"})", "the key “id” is missing"},
             Case{record(R"(,"rev":"1")"), "the key “rev” holds something else"},
             Case{record(R"(,"rev":1.5)"), "the key “rev” holds something else"},
             Case{record(R"(,"rev":9223372036854775808)"), "the key “rev” holds something else"},
             Case{record(R"(,"deleted":1)"), "the key “deleted” holds something else"},
             Case{record(R"(,"payload":[])"), "the key “payload” holds something else"},
             Case{
                 record(R"(,"updated_at":"yesterday")"),
                 "the key “updated_at” holds something else"},
             Case{record(R"(,"id":"6f9619ff")"), "the key “id” holds something else"},
             Case{record(R"(,"payload":{"a":1e999})"), "not the expected JSON"},
         }) {
        SCOPED_TRACE(text.substr(0, 160));
        try {
            wire::decodeText<SyncRecord>(text);
            ADD_FAILURE() << "was read";
        } catch (const WireError& error) {
            EXPECT_STREQ(error.what(), why);
        }
    }
}

TEST(WireRecords, RevisionsKeepEveryDigitAndIdentifiersAreWrittenInLowerCase) {
    const auto decoded = wire::decodeText<SyncRecord>(
        R"({"id":"6F9619FF-8B86-D011-B42D-00CF4FC964FF","kind":"newer","rev":9007199254740993,)"
        R"("seq":9223372036854775807,"updated_at":"2025-03-01T12:00:00.123+02:00"})");
    EXPECT_EQ(
        json::write(wire::encode(decoded)),
        R"({"id":"6f9619ff-8b86-d011-b42d-00cf4fc964ff","kind":"newer","rev":9007199254740993,)"
        R"("seq":9223372036854775807,"deleted":false,"payload":{},)"
        R"("updated_at":"2025-03-01T10:00:00.123Z"})");
}

TEST(WireRecords, APushIsWrittenInTheOrderOfTheWire) {
    const SyncPush push{
        .id = *Uuid::parse(id),
        .kind = "tag",
        .baseRev = 7,
        .updatedAt = Instant::fromMilliseconds(-250),
        .payload = {{"name", "a"}, {"count", 2.0}, {"share", 0.5}, {"color", JSONValue()}}};
    EXPECT_EQ(
        wire::pushBody({push}),
        R"({"changes":[{"id":"6f9619ff-8b86-d011-b42d-00cf4fc964ff","kind":"tag",)"
        R"("deleted":false,"payload":{"color":null,"count":2,"name":"a","share":0.5},)"
        R"("base_rev":7,"updated_at":"1969-12-31T23:59:59.750Z"}]})");
}

TEST(WireRecords, APushReplyCarriesTheServersCopy) {
    const auto reply = wire::decodeText<PushResponse>(
        R"({"head":9,"results":[{"id":")" + std::string(id)
        + R"(","status":"superseded","displaced":null,"server":)" + record(R"(,"rev":3)") + "}]}");
    ASSERT_EQ(reply.results.size(), 1U);
    EXPECT_EQ(reply.results[0].displaced, std::nullopt);
    ASSERT_TRUE(reply.results[0].server);
    EXPECT_EQ(reply.results[0].server->rev, 3);
    EXPECT_THROW(wire::decodeText<PushResponse>(R"({"results":[]})"), WireError);
}

TEST(WireRecords, AnOptionalDateThatIsNoneIsLeftOut) {
    const auto token = wire::decodeText<APITokenInfo>(
        R"({"id":"1","label":"a","created_at":"2025-03-01T10:00:00Z","last_used_at":"never"})");
    EXPECT_EQ(token.lastUsedAt, std::nullopt);
    EXPECT_EQ(
        json::write(wire::listed(token)),
        R"({"id":"1","label":"a","created_at":"2025-03-01T10:00:00.000Z","last_used_at":null,)"
        R"("expires_at":null})");
}

TEST(WireDate, ReadsZonesAndUpToNineDigitsOfAFraction) {
    struct Case {
        const char* text;
        std::optional<std::int64_t> milliseconds;
    };
    for (const auto& [text, milliseconds] : {
             Case{"2025-03-01T10:00:00Z", 1740823200000},
             Case{"2025-03-01T10:00:00.1Z", 1740823200100},
             Case{"2025-03-01T10:00:00.123456789Z", 1740823200123},
             Case{"2025-03-01T10:00:00.1234567891Z", std::nullopt},
             Case{"2025-03-01T12:30:00+02:30", 1740823200000},
             Case{"2025-03-01T10:00:00", std::nullopt},
             Case{"2025-03-01 10:00:00Z", std::nullopt},
             Case{"2025-02-30T10:00:00Z", std::nullopt},
             Case{"2025-03-01T10:00:00.Z", std::nullopt},
         }) {
        SCOPED_TRACE(text);
        const auto read = wire::parseDate(text);
        EXPECT_EQ(read ? std::optional(read->milliseconds()) : std::nullopt, milliseconds);
    }
}

TEST(JSONValue, CasesAreToldApartAndComeBackAsTheyWere) {
    using Case = JSONValue::Case;
    EXPECT_EQ(JSONValue::decode("true").kind(), Case::boolean);
    EXPECT_EQ(JSONValue::decode("1").kind(), Case::number);
    EXPECT_EQ(JSONValue::decode("\"1\"").kind(), Case::string);
    EXPECT_EQ(JSONValue::decode("null").kind(), Case::null);
    EXPECT_EQ(JSONValue::decode("1"), JSONValue::decode("1.0"));
    EXPECT_FALSE(JSONValue::decode("1") == JSONValue::decode("true"));

    const std::string nested = R"({"a":[1,-0.25,"x",null,{"b":{}}],"c":false})";
    EXPECT_EQ(json::write(JSONValue::decode(nested).toJSON()), nested);
    EXPECT_THROW(JSONValue::decode("{]"), WireError);
}

TEST(ProblemBody, AnyBodyIsRead) {
    const auto whole = ProblemBody::read(
        R"({"error":{"code":"in_use","message":"Still in use.","references":["a",1]},"detail":"d"})");
    EXPECT_EQ(whole.code, "in_use");
    EXPECT_EQ(whole.message, "Still in use.");
    EXPECT_EQ(whole.references, std::vector<std::string>{"a"});
    for (const char* body : {"", "<html>", "[]", R"({"error":"text","detail":5})"}) {
        SCOPED_TRACE(body);
        EXPECT_EQ(ProblemBody::read(body).message, std::nullopt);
        EXPECT_EQ(ProblemBody::read(body).detail, std::nullopt);
    }
}

TEST(TaskVersion, IsReadFromAPayloadOfAnyShape) {
    SyncRecord revision{.id = {}, .kind = "task"};
    revision.payload = {
        {"title", "Pay"},
        {"details", 5},
        {"priority", 9},
        {"completed_at", "2025-03-01T10:00:00Z"}};
    const TaskVersion version = TaskVersion::from(revision);
    EXPECT_EQ(version.title, "Pay");
    EXPECT_EQ(version.notes, "");
    EXPECT_TRUE(version.isDone);
    EXPECT_EQ(version.priority, 4);
}

}  // namespace
}  // namespace tesserine
