#include "core/import/FrontMatter.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

/// Every field on a line of its own: a list in brackets, line breaks as "/".
std::string rendered(const std::optional<FrontMatter>& matter) {
    if (!matter) return "none";
    std::string result;
    for (const FrontMatterField& field : matter->fields) {
        if (!result.empty()) result += "; ";
        result += field.key + (field.isList ? "=[" + field.text() + "]" : "=" + field.text());
    }
    for (char& c : result) {
        if (c == '\n') c = '/';
    }
    return result;
}

struct FrontMatterCase {
    const char* yaml;
    const char* fields;
};

TEST(FrontMatter, ScalarsAndListsAreRead) {
    for (const auto& [yaml, fields] : {
             FrontMatterCase{"title: Plan: part 2 # draft", "title=Plan: part 2"},
             FrontMatterCase{
                 "a: x#y\nb: 'it''s' # c\nc: \"q \\\"x\\\" \\u00e9\\U0001F600\\x41\"",
                 "a=x#y; b=it's; c=q \"x\" é😀A"},
             FrontMatterCase{
                 "a: Anna's list, it's\nb: 5 o'clock # c", "a=Anna's list, it's; b=5 o'clock"},
             FrontMatterCase{"url: https://x.org/a?b#c", "url=https://x.org/a?b#c"},
             FrontMatterCase{"\"my key\": 1\n'b': 2", "my key=1; b=2"},
             FrontMatterCase{"a:\nb: ~\nc: null\nd: # none", "a=; b=; c=; d="},
             FrontMatterCase{"t: [a, 'b, c', \"d\", [e, f], ]", "t=[a, b, c, d, [e, f]]"},
             FrontMatterCase{"t: [\n  a,\n  b\n]\nu: 1", "t=[a, b]; u=1"},
             FrontMatterCase{"t: [a, b\nu: 1", "t=[a, b; u=1"},  // never closed
             FrontMatterCase{"t:\n- a\n- 'b' # c\n-\nu: 1", "t=[a, b]; u=1"},
             FrontMatterCase{"t:\n  - a\n  - b\n    c", "t=[a, b/c]"},
             FrontMatterCase{"# comment\n\na: 1\n\nA: 2", "a=1; A=2"},
             FrontMatterCase{"a: 1\nb: 2\na: 3", "a=3; b=2"},
             FrontMatterCase{"a: one\n  two\n\n  three", "a=one two three"},
             FrontMatterCase{"a: 'one\n  two'", "a=one two"},
             FrontMatterCase{"a: |\n  one\n    two\n\n  three\nb: 1", "a=one/  two//three; b=1"},
             FrontMatterCase{"a: >-\n  one\n  two\n\n  three", "a=one two/three"},
             FrontMatterCase{"a:\n  b: 1\n  c:\n    d: 2", "a=b: 1/c:/  d: 2"},
             FrontMatterCase{"a: {b: 1, c: [2]}", "a={b: 1, c: [2]}"},
             FrontMatterCase{R"(a: "broken \q \u12)", R"(a="broken \q \u12)"},
             FrontMatterCase{R"(a: "\u0000\ud800")", "a=\uFFFD\uFFFD"},
             FrontMatterCase{"", ""},
         }) {
        SCOPED_TRACE(yaml);
        const std::string text = "---\n" + std::string(yaml) + "\n---\nbody";
        const auto matter = parseFrontMatter(text);
        EXPECT_EQ(rendered(matter), fields);
        ASSERT_TRUE(matter);
        EXPECT_EQ(text.substr(matter->end), "body");
    }
}

TEST(FrontMatter, TextThatOnlyLooksLikeItIsLeftAlone) {
    for (const char* text : {
             "a: 1\n---\n",
             "--- \n",
             "---\na: 1\n",  // never closed
             "---\nJust a line between rules.\n---\n",
             "---\n- a list\n---\n",
             "---\n    indented: code\n---\n",
             "----\na: 1\n---\n",
             "\n---\na: 1\n---\n",
             "",
         }) {
        SCOPED_TRACE(text);
        EXPECT_EQ(rendered(parseFrontMatter(text)), "none");
    }
    EXPECT_EQ(parseFrontMatter("--- \na: 1\n...")->end, 13U);
}

TEST(FrontMatter, HugeOnesAreReadInLinearTime) {
    std::string keys = "---\n";
    std::string list = "---\nt: [\n";
    for (int i = 0; i < 100'000; ++i) {
        keys += "k" + std::to_string(i) + ": 1\n";
        list += "a,\n";
    }
    EXPECT_EQ(parseFrontMatter(keys + "---\n")->fields.size(), 100'000U);
    EXPECT_EQ(parseFrontMatter(list + "]\n---\n")->fields.front().values.size(), 100'000U);
}

}  // namespace
}  // namespace tesserine
