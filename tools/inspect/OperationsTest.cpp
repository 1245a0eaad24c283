#include "tools/inspect/Operations.h"

#include <gtest/gtest.h>

namespace tesserine::inspect {
namespace {

class Inspect : public testing::Test {
protected:
    Inspect() {
        addBaseOperations(operations_);
        operations_.add("fail", [](const auto&) -> boost::json::value {
            throw std::out_of_range("a mistake of the rule");
        });
    }
    std::string ask(std::string_view line) const { return answer(operations_, line); }

    Operations operations_;
};

TEST_F(Inspect, EveryLineGetsOneAnswerUnderItsOwnId) {
    EXPECT_EQ(
        ask(R"({"id": "é\n1", "op": "hash.sha256", "input": {"hex": "61", "repeat": 1000000}})"),
        R"({"id":"é\n1",)"
        R"("output":"cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"})");
    EXPECT_EQ(
        ask(R"({"id": 7, "op": "hash.sha256", "input": {"hex": ""}})"),
        R"({"id":7,)"
        R"("output":"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"})");
    EXPECT_EQ(ask(R"({"id":"a","op":"no.such"})"), R"({"id":"a","output":"unsupported"})");
}

TEST_F(Inspect, WhatItCannotReadIsAnErrorAndNoEnd) {
    struct Case {
        const char* line;
        const char* answer;
    };
    for (const auto& [line, expected] : {
             Case{"", R"({"id":null,"error":"incomplete JSON at byte 0"})"},
             Case{"[1]", R"({"id":null,"error":"the line is not an object"})"},
             Case{
                 R"({"id":"a"})", R"({"id":"a","error":"the input needs “op”, which is missing"})"},
             Case{
                 R"({"id":"a","op":"hash.sha256","input":[]})",
                 R"({"id":"a","error":"the input needs “input”, an object"})"},
             Case{
                 R"({"id":"a","op":"hash.sha256","input":{"hex":"0"}})",
                 R"({"id":"a","error":"“hex” is not hexadecimal"})"},
             Case{
                 R"({"id":"a","op":"hash.sha256","input":{"hex":"","repeat":"2"}})",
                 R"({"id":"a","error":"the input needs “repeat”, a whole number"})"},
             Case{R"({"id":"a","op":"fail"})", R"({"id":"a","error":"a mistake of the rule"})"},
         }) {
        EXPECT_EQ(ask(line), expected);
    }
}

}  // namespace
}  // namespace tesserine::inspect
