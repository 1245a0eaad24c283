#include "ai/ModelReply.h"

#include "ai/AIError.h"
#include "ai/AISettings.h"
#include "base/Preferences.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine::ai {
namespace {

std::string shown(const AIResponse& response) {
    std::string text = response.text + " by " + response.model;
    for (const WebCitation& citation : response.webCitations) {
        text += " <" + citation.url + (citation.title ? " " + *citation.title : "") + ">";
    }
    if (response.usage) {
        text += " " + std::to_string(response.usage->inputTokens) + "/"
                + std::to_string(response.usage->outputTokens);
    }
    return text;
}

/// The answer in words, or the sentence of the failure.
std::string answered(bool isRelay, const ServiceReply& reply) {
    try {
        return shown(isRelay ? relay::response(reply) : grok::response(reply, "asked"));
    } catch (const AIError& error) {
        return error.what();
    }
}

TEST(ModelReply, GivesTextSourcesAndUsageInEitherForm) {
    struct Case {
        bool isRelay;
        const char* body;
        const char* answer;
    };
    for (
        const auto& [isRelay, body, answer] : {
            Case{
                false,
                R"({"model":"m","output":[{"type":"reasoning","content":[{"type":"output_text","text":"no"}]},
                     {"type":"message","content":[{"type":"output_text","text":"A [1]",
                       "annotations":[{"url":"u","title":"T"},{"url":"u"},{"title":"none"}]},
                      {"type":"refusal","text":"x"},{"type":"output_text","text":" B"}]}],
                     "citations":["v",{"url":"w","title":"W"},"u",7],
                     "usage":{"input_tokens":3,"output_tokens":4}})",
                "A [1] B by m <u T> <v> <w W> 3/4"},
            Case{
                false,
                R"({"choices":[{"message":{"content":"Chat"}}],
                     "usage":{"prompt_tokens":1,"completion_tokens":2}})",
                "Chat by asked 1/2"},
            Case{
                true,
                R"({"text":"R","citations":[{"url":"u","title":"T"}],
                     "usage":{"input_tokens":5,"output_tokens":6}})",
                "R by tesserine-relay <u T> 5/6"},
            Case{true, R"({"text":"R","model":"m","usage":{"input_tokens":"5"}})", "R by m"},
        }) {
        EXPECT_EQ(answered(isRelay, {.status = 200, .body = body}), answer);
    }
}

TEST(ModelReply, EveryFailureHasItsSentence) {
    const std::string unreadable = "Tesserine could not read the AI service's reply. ";
    const std::string longMessage = R"({"error":{"message":")" + std::string(500, 'x') + R"("}})";
    struct Case {
        bool isRelay;
        ServiceReply reply;
        std::string sentence;
    };
    const Case cases[] = {
        {false, {401, "", ""}, AIError::unauthorized().what()},
        {false, {403, "", ""}, AIError::unauthorized().what()},
        {true, {403, "", ""}, AIError::accountUnauthorized().what()},
        {false, {413, "", ""}, AIError::requestTooLarge().what()},
        {false, {429, "", ""}, "The AI service is busy right now. Try again shortly."},
        {true, {429, "", " 12.4 "}, "The AI service is busy. Try again in about 12 seconds."},
        {false, {429, "", "12.5"}, "The AI service is busy. Try again in about 13 seconds."},
        {false,
         {429, "", "99999999999"},
         "The AI service is busy. Try again in about 86400 seconds."},
        {false,
         {500, R"({"error":"down"})", ""},
         "The AI service returned an error (500). The service did not explain why."},
        {true,
         {302, "<html>", ""},
         "The AI service returned an error (302). The service did not explain why."},
        {false,
         {503, longMessage, ""},
         "The AI service returned an error (503). " + std::string(200, 'x')},
        {false, {200, "<html>", ""}, unreadable + "The reply was not JSON."},
        {false,
         {200, R"({"output":[],"status":"incomplete"})", ""},
         unreadable + "The service returned no text (status: incomplete)"},
        {false, {200, "{}", ""}, unreadable + "The service returned no text (status: unknown)"},
        {true, {200, R"({"text":""})", ""}, unreadable + "The relay returned no text."},
        {true, {200, R"({"text":"cut)", ""}, unreadable + "The reply was not JSON."},
    };
    for (const auto& [isRelay, reply, sentence] : cases) {
        EXPECT_EQ(answered(isRelay, reply), sentence) << reply.status << reply.body;
    }
}

TEST(ModelReply, AWaitThatIsNoCountOfSecondsIsNotShown) {
    for (const char* odd :
         {"soon",
          "inf",
          "nan",
          "-5",
          "1e308",
          "0x10",
          "",
          ".",
          "1.2.3",
          "Wed, 21 Oct 2015 07:28:00 GMT"}) {
        EXPECT_EQ(
            answered(false, {429, "", odd}), "The AI service is busy right now. Try again shortly.")
            << odd;
    }
}

TEST(ModelRequest, SaysWhatIsAskedInEachServicesWords) {
    AIRequest request{
        .instructions = "Be brief.",
        .messages = {{AIMessage::Role::user, "\"Hi\"\n"}, {AIMessage::Role::assistant, "Yes"}},
        .maxOutputTokens = 800,
        .model = "m"};
    EXPECT_EQ(
        grok::requestBody(request),
        R"({"model":"m","instructions":"Be brief.","input":[{"role":"user","content":"\"Hi\"\n"},)"
        R"({"role":"assistant","content":"Yes"}],"max_output_tokens":800,"temperature":0.2,"store":false})");
    request.enableWebSearch = true;
    EXPECT_TRUE(grok::requestBody(request).ends_with(R"("tools":[{"type":"web_search"}]})"));
    request.messages.clear();
    EXPECT_EQ(
        relay::requestBody(request),
        R"({"instructions":"Be brief.","messages":[],"max_output_tokens":800,"temperature":0.2,"web_search":true})");
}

TEST(AISettings, ReadFieldByFieldAndStayOffWhenUnreadable) {
    const AISettings defaults;
    EXPECT_FALSE(defaults.isEnabled);
    EXPECT_EQ(defaults.model, "grok-4.6");
    for (const char* unreadable : {"", "[]", "{", "null"}) {
        EXPECT_EQ(AISettings::parse(unreadable), defaults) << unreadable;
    }
    AISettings expected;
    expected.isEnabled = true;
    EXPECT_EQ(
        AISettings::parse(
            R"({"isEnabled":true,"backend":"new","model":7,"allowWebSearch":1,"future":{}})"),
        expected);

    expected.backend = AISettings::Backend::ownKey;
    expected.relayBaseURL = "https://other.example/api/v1";
    Preferences preferences = Preferences::inMemory();
    preferences.set(AISettings::preferencesKey, "{\"isEnabled\":tr");
    EXPECT_EQ(AISettings::load(preferences), defaults);
    expected.save(preferences);
    EXPECT_EQ(AISettings::load(preferences), expected);
    expected.save(preferences);
    EXPECT_EQ(preferences.string(AISettings::unreadableKey), "{\"isEnabled\":tr")
        << "what was broken is kept aside";
}

}  // namespace
}  // namespace tesserine::ai
