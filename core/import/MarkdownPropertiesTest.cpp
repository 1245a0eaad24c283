#include "core/import/MarkdownProperties.h"

#include "core/import/SourceDate.h"
#include "core/import/SourceNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tesserine {
namespace {

using testing::ElementsAre;
using testing::Pair;

MarkdownProperties propertiesOf(const std::string& yaml) {
    return markdownProperties(
        parseFrontMatter("---\n" + yaml + "\n---\n").value(), Calendar("Europe/Berlin"));
}

TEST(MarkdownProperties, KnownKeysAreTakenAndTheRestIsKept) {
    const MarkdownProperties note = propertiesOf("Title: ' Plan '\n"
                                                 "tags: [work, '#deep/er', ' ']\n"
                                                 "date: 2026-03-14\n"
                                                 "modified: 2026-03-15T10:00:00Z\n"
                                                 "favorite: yes\n"
                                                 "notebook: Work / Plans\n"
                                                 "source: https://example.org/a\n"
                                                 "id: 5F0D5B1E-1111-4222-8333-444455556666\n"
                                                 "authors: [Ada, Grace]\n"
                                                 "empty:\n");
    EXPECT_EQ(note.title, "Plan");
    EXPECT_THAT(note.tags, ElementsAre("work", "deep/er"));
    EXPECT_EQ(note.created->iso(), "2026-03-13T23:00:00.000Z");
    EXPECT_EQ(note.updated->iso(), "2026-03-15T10:00:00.000Z");
    EXPECT_TRUE(note.isPinned);
    EXPECT_THAT(note.notebookPath, ElementsAre("Work", "Plans"));
    EXPECT_EQ(note.sourceURL, "https://example.org/a");
    EXPECT_THAT(
        note.metadata,
        ElementsAre(
            Pair("id", "5F0D5B1E-1111-4222-8333-444455556666"), Pair("authors", "Ada, Grace")));
    EXPECT_THAT(note.warnings, ElementsAre());
}

TEST(MarkdownProperties, WhatIsNotUnderstoodIsKeptAsMetadata) {
    const MarkdownProperties note = propertiesOf(
        "created: some day\ndate: 2026-03-14 09:00\nupdated: 9999-01-01\npinned: maybe\n"
        "source: a book");
    EXPECT_EQ(note.created->iso(), "2026-03-14T08:00:00.000Z");
    EXPECT_FALSE(note.updated);
    EXPECT_FALSE(note.isPinned);
    EXPECT_FALSE(note.sourceURL);
    EXPECT_THAT(
        note.metadata,
        ElementsAre(
            Pair("created", "some day"),
            Pair("updated", "9999-01-01"),
            Pair("pinned", "maybe"),
            Pair("source", "a book")));
    EXPECT_THAT(
        note.warnings,
        ElementsAre(
            "The date in “created” could not be read.",
            "The date in “updated” could not be read."));
}

TEST(MarkdownProperties, TagsComeInManyForms) {
    EXPECT_THAT(propertiesOf("tags: a b, c").tags, ElementsAre("a b", "c"));
    EXPECT_THAT(propertiesOf("tags: '#a #b'").tags, ElementsAre("a", "b"));
    EXPECT_THAT(propertiesOf("tags:\n  - a\n  - 'b, c'").tags, ElementsAre("a", "b, c"));

    std::string many = "tags: [";
    for (int i = 0; i < 50'000; ++i) {
        many += "t" + std::to_string(i) + ",";
    }
    const MarkdownProperties note = propertiesOf(many + "]");
    EXPECT_EQ(note.tags.size(), SourceTags::mostTags);
    EXPECT_THAT(note.warnings, ElementsAre("Tags were left out: too many, or too long."));
}

TEST(SourceDate, WrittenFormsAreReadInTheirZone) {
    struct Case {
        const char* text;
        const char* instant;
    };
    const Calendar berlin("Europe/Berlin");
    for (const auto& [text, instant] : {
             Case{"2026-03-14", "2026-03-13T23:00:00.000Z"},
             Case{"2026/7/4", "2026-07-03T22:00:00.000Z"},
             Case{" 2026-03-14 09:15 ", "2026-03-14T08:15:00.000Z"},
             Case{"2026-03-14T09:15:30", "2026-03-14T08:15:30.000Z"},
             Case{"2026-03-14T09:15:30.1239Z", "2026-03-14T09:15:30.123Z"},
             Case{"2026-03-14 09:15:30 -0530", "2026-03-14T14:45:30.000Z"},
             Case{"2026-03-14T09:15+01", "2026-03-14T08:15:00.000Z"},
             Case{"2024-02-29", "2024-02-28T23:00:00.000Z"},
             Case{"2026-02-29", "none"},
             Case{"2026-13-01", "none"},
             Case{"2026-03-14 25:00", "none"},
             Case{"2026-03-14 09:15 later", "none"},
             Case{"0000-01-01", "none"},
             Case{"9999-12-31", "none"},
             Case{"-1", "none"},
             Case{"", "none"},
         }) {
        SCOPED_TRACE(text);
        const auto read = sourceDate(text, berlin);
        EXPECT_EQ(read ? read->iso() : "none", instant);
    }
}

}  // namespace
}  // namespace tesserine
