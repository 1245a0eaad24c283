#include "search/IndexCoverage.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

TEST(IndexCoverage, SaysInOneLineWhatIsIndexedAndWhatIsWrong) {
    const IndexCoverage healthy{
        .notes = 1234567,
        .tasks = 2,
        .attachments = 5,
        .attachmentsWithText = 1,
        .indexedNotes = 1234567,
        .indexedTasks = 2,
        .indexedAttachments = 4,  // those without text do not count
        .indexedAttachmentsWithText = 1,
        .schemaVersion = 6,
    };
    EXPECT_EQ(
        healthy.summary("en_US"),
        "1,234,567 of 1,234,567 notes, 2 of 2 tasks, 1 of 1 attachments with text indexed — up to "
        "date");
    EXPECT_EQ(
        healthy.summary("de_DE.UTF-8"),
        "1.234.567 of 1.234.567 notes, 2 of 2 tasks, 1 of 1 attachments with text indexed — up to "
        "date");

    const auto problems = [&](auto change) {
        IndexCoverage coverage = healthy;
        change(coverage);
        const std::string line = coverage.summary("en_GB");
        return line.substr(line.find(" — "));
    };
    EXPECT_EQ(
        problems([](IndexCoverage& coverage) {
            coverage.missing = 2000;
            coverage.stale = 1;
            coverage.orphaned = 3;
            coverage.indexedAttachmentsWithText = 0;  // follows from what is missing
            coverage.interruptedRebuild = true;
            coverage.schemaVersion = 5;
        }),
        " — 2,000 missing, 1 out of date, 3 leftover, a rebuild was interrupted, old index format");
    EXPECT_EQ(
        problems([](IndexCoverage& coverage) {
            coverage.orphaned = 1;
            coverage.indexedAttachmentsWithText = 2;
            coverage.schemaVersion.reset();
        }),
        " — 1 leftover, attachment text differs, old index format");
}

}  // namespace
}  // namespace tesserine
