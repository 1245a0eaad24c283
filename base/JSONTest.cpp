#include "base/JSON.h"

#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace tesserine {
namespace {

TEST(JSON, KeepsKeyOrderAndWritesNumbersPlainly) {
    struct Case {
        const char* read;
        const char* written;
    };
    for (const auto& [read, written] : {
             Case{
                 R"( {"z": 1, "a": [true, null], "z2": {}} )",
                 R"({"z":1,"a":[true,null],"z2":{}})"},
             Case{
                 "[52.5, 100000.0, 1e5, 1e21, 0.0000001]",
                 "[52.5,100000.0,100000.0,1e+21,0.0000001]"},
             Case{
                 "[-0.0, 9007199254740993, 1773223200.123]",
                 "[-0.0,9007199254740993,1773223200.123]"},
             Case{"18446744073709551615", "18446744073709551615"},
             Case{R"({"a":1,"a":2})", R"({"a":2})"},
             Case{R"("\u00e9\ud83d\ude00\/\u0000\u001b\n")", "\"é😀/\\u0000\\u001b\\n\""},
         }) {
        EXPECT_EQ(json::write(json::parse(read)), written);
    }
    EXPECT_EQ(json::write(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(
        json::write(json::parse(R"({"b":[1,{"c":[]}],"a":{}})"), json::Layout::pretty),
        "{\n  \"b\": [\n    1,\n    {\n      \"c\": []\n    }\n  ],\n  \"a\": {}\n}");
}

TEST(JSON, ReadsBackEveryDoubleItWrote) {
    test::SeededRandom random(9);
    for (int i = 0; i < 50'000; ++i) {
        double number = 0;
        std::uint64_t bits = random.below(std::numeric_limits<std::uint64_t>::max());
        std::memcpy(&number, &bits, sizeof number);
        if (!std::isfinite(number)) continue;
        ASSERT_EQ(json::parse(json::write(number)).as_double(), number) << bits;
    }
}

TEST(JSON, RefusesWhatIsNoJSONAndSaysWhere) {
    for (const char* text :
         {"", "[1,", "[1] x", "nul", "{'a':1}", "[1,]", "\"\xFF\"", R"("\ud800")", "1e999", "01"}) {
        EXPECT_THROW(json::parse(text), json::JSONError) << text;
    }
    try {
        json::parse(R"({"secret words": oops})");
        FAIL();
    } catch (const json::JSONError& error) {
        EXPECT_STREQ(error.what(), "syntax error at byte 17");
    }
}

TEST(JSON, BoundsDepthAndLength) {
    const std::string open(128, '[');
    const std::string close(128, ']');
    EXPECT_NO_THROW(json::parse(open + close));
    EXPECT_THROW(json::parse("[" + open + close + "]"), json::JSONError);
    EXPECT_THROW(json::parse(std::string(1'000'000, '[')), json::JSONError);
    EXPECT_NO_THROW(json::parse("[1]", {.byteCount = 3}));
    EXPECT_THROW(json::parse("[12]", {.byteCount = 3}), json::JSONError);
}

}  // namespace
}  // namespace tesserine
