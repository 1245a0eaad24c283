#include "core/export/ICSExporter.h"

#include "base/Product.h"
#include "core/export/ExportError.h"
#include "core/services/LibraryFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace tesserine {
namespace {

using Unit = RecurrenceRule::Unit;
using test::at;
using testing::HasSubstr;
using testing::Not;

const std::string uid = "AABBCCDD-0000-4000-8000-0000000000EF";

ICSTask rent() {
    return {
        .id = *Uuid::parse(uid),
        .title = "Pay rent",
        .dueDate = at("2026-03-31T15:00:00Z"),
        .dueHasTime = true,
        .createdAt = at("2026-01-02T03:04:05Z"),
        .updatedAt = at("2026-02-03T04:05:06.999Z")};
}

ICSExporter exporter(const std::string& zone = "UTC") {
    return {at("2026-03-14T09:15:00Z"), Calendar(zone)};
}

std::vector<std::string> linesOf(std::string_view document) {
    std::vector<std::string> lines;
    for (std::size_t end = document.find("\r\n"); end != std::string_view::npos;
         end = document.find("\r\n")) {
        lines.emplace_back(document.substr(0, end));
        document.remove_prefix(end + 2);
    }
    lines.emplace_back(document);
    return lines;
}

TEST(ICSExporter, TaskBecomesItsLinesInOrder) {
    ICSTask task = rent();
    const std::string suffix = "@" + std::string(product::domain);
    EXPECT_THAT(
        exporter().component(task),
        testing::ElementsAre(
            "BEGIN:VTODO",
            "UID:" + uid + suffix,
            "DTSTAMP:20260314T091500Z",
            "CREATED:20260102T030405Z",
            "LAST-MODIFIED:20260203T040506Z",
            "SUMMARY:Pay rent",
            "DTSTART:20260331T150000Z",
            "DUE:20260331T150000Z",
            "PRIORITY:0",
            "END:VTODO"));

    task.details = "Ada's account";
    task.dueHasTime = false;
    task.rule = RecurrenceRule{.unit = Unit::month, .dayOfMonth = 31};
    task.completedAt = at("2026-03-30T08:00:00Z");
    task.priority = TaskPriority::p2;
    task.createdAt.reset();
    task.updatedAt.reset();
    // 15:00 in UTC is the next day already in Auckland.
    EXPECT_THAT(
        exporter("Pacific/Auckland").component(task),
        testing::ElementsAre(
            "BEGIN:VTODO",
            "UID:" + uid + suffix,
            "DTSTAMP:20260314T091500Z",
            "CREATED:20260314T091500Z",
            "LAST-MODIFIED:20260314T091500Z",
            "SUMMARY:Pay rent",
            "DESCRIPTION:Ada's account",
            "DTSTART;VALUE=DATE:20260401",
            "DUE;VALUE=DATE:20260401",
            "RRULE:FREQ=MONTHLY;INTERVAL=1;BYMONTHDAY=31",
            "COMPLETED:20260330T080000Z",
            "PRIORITY:3",
            "END:VTODO"));
}

TEST(ICSExporter, RuleBecomesAnRRULE) {
    struct Case {
        RecurrenceRule rule;
        const char* text;
    };
    for (const auto& [rule, text] : {
             Case{{.unit = Unit::day, .interval = 3}, "FREQ=DAILY;INTERVAL=3"},
             Case{
                 {.unit = Unit::week, .interval = 2, .weekdays = {4, 2}},
                 "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE"},
             Case{
                 {.unit = Unit::week, .weekdays = {0, 1, 7, 8}},
                 "FREQ=WEEKLY;INTERVAL=1;BYDAY=SU,SA"},
             Case{{.unit = Unit::week, .interval = 0, .weekdays = {8}}, "FREQ=WEEKLY;INTERVAL=1"},
             Case{
                 {.unit = Unit::year, .interval = -2, .dayOfMonth = 29, .monthOfYear = 2},
                 "FREQ=YEARLY;INTERVAL=1;BYMONTHDAY=29;BYMONTH=2"},
         }) {
        EXPECT_EQ(ICSExporter::ruleText(rule), text);
    }
}

TEST(ICSExporter, NoTitleEndsItsLine) {
    struct Case {
        std::string title;
        std::string value;
    };
    const std::string longTitle(10'000, 'x');
    for (const auto& [title, value] : {
             Case{"Buy milk, eggs; bread", R"(Buy milk\, eggs\; bread)"},
             Case{"a\\nb\\", R"(a\\nb\\)"},
             Case{"a\nEND:VTODO", R"(a\nEND:VTODO)"},
             Case{"a\r\nb\rc\n\rd\r\r\ne", R"(a\nb\nc\n\nd\n\ne)"},
             Case{"\r", R"(\n)"},
             Case{"tab\t🔒 é", "tab\t🔒 é"},
             Case{longTitle, longTitle},
         }) {
        EXPECT_EQ(ICSExporter::escaped(title), value);
        ICSTask task = rent();
        task.title = title;
        task.details = title;
        const std::string document = exporter().document({task}, {});
        EXPECT_EQ(linesOf(document).size(), 5U + 11U + 1U);
        EXPECT_EQ(std::ranges::count(document, '\r'), std::ranges::count(document, '\n'));
    }
}

class CalendarFile : public test::LibraryFixture {
protected:
    CDTask& insertTask(const std::string& title, const char* due) {
        auto& task = context.insert<CDTask>();
        task.title = title;
        if (due != nullptr) task.dueDate = at(due);
        return task;
    }
    /// The summaries of the file that is written, in order.
    std::vector<std::string> summaries(const ICSExportOptions& options) {
        context.save();
        const auto file = folder_ / (options.includeCompleted ? "all.ics" : "open.ics");
        const std::size_t count = exportCalendar(context, file, options, Calendar("UTC"));
        const std::string content = test::contentOf(file);
        EXPECT_THAT(content, testing::StartsWith("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:"));
        EXPECT_THAT(content, testing::EndsWith("\r\nEND:VCALENDAR\r\n"));
        std::vector<std::string> found;
        for (const std::string& line : linesOf(content)) {
            if (line.starts_with("SUMMARY:")) found.push_back(line.substr(8));
        }
        EXPECT_EQ(found.size(), count);
        return found;
    }

    test::TemporaryFolder folder_;
};

TEST_F(CalendarFile, HoldsDatedTasksByDateAndSubtasksToo) {
    CDTask& late = insertTask("late", "2026-05-01T00:00:00Z");
    insertTask("sub", "2026-04-01T00:00:00Z").parent = &late;
    insertTask("someday", nullptr);
    insertTask("done", "2026-01-01T00:00:00Z").completedAt = clock.now();
    insertTask(std::string("n\0ul", 4), "2026-06-01T00:00:00Z");
    EXPECT_THAT(summaries({}), testing::ElementsAre("sub", "late", "nul"));
    EXPECT_THAT(
        summaries({.includeCompleted = true}), testing::ElementsAre("done", "sub", "late", "nul"));
}

TEST_F(CalendarFile, OverwritesNothing) {
    test::putContent(folder_ / "mine.ics", "mine");
    std::filesystem::create_symlink(folder_ / "mine.ics", folder_ / "link.ics");
    for (const char* name : {"mine.ics", "link.ics", "no/folder.ics"}) {
        try {
            exportCalendar(context, folder_ / name, {}, Calendar("UTC"));
            ADD_FAILURE() << name;
        } catch (const ExportError& error) {
            EXPECT_THAT(
                error.what(),
                testing::StartsWith("Tesserine could not finish writing the export. “"));
        }
    }
    EXPECT_EQ(test::contentOf(folder_ / "mine.ics"), "mine");
}

}  // namespace
}  // namespace tesserine
