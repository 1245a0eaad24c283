#include "base/JSON.h"
#include "core/tasks/RecurrenceRule.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <gtest/gtest.h>

namespace tesserine {
namespace {

using Unit = RecurrenceRule::Unit;

TEST(RecurrenceRuleText, StorageNamesOnlyWhatIsThere) {
    const RecurrenceRule weekly{.unit = Unit::week, .interval = 2, .weekdays = {4, 2}};
    EXPECT_EQ(weekly.storageString(), "unit=week;interval=2;weekdays=2,4");
    const RecurrenceRule leapDay{.unit = Unit::year, .dayOfMonth = 29, .monthOfYear = 2};
    EXPECT_EQ(leapDay.storageString(), "unit=year;interval=1;dayOfMonth=29;monthOfYear=2");

    EXPECT_EQ(
        json::write(weekly.json()),
        R"({"unit":"week","interval":2,"weekdays":[2,4],"dayOfMonth":null,"monthOfYear":null})");
}

TEST(RecurrenceRuleText, StorageIsReadWithTolerance) {
    struct Case {
        const char* text;
        const char* read;
    };
    for (const auto& [text, read] : {
             Case{"unit=day", "unit=day;interval=1"},
             Case{
                 " unit = week ;interval= 2; weekdays = 4 , 2,,2 ;",
                 "unit=week;interval=2;weekdays=2,4"},
             Case{
                 "monthOfYear=2;dayOfMonth=29;unit=year",
                 "unit=year;interval=1;dayOfMonth=29;monthOfYear=2"},
             Case{"unit=month;colour=red;noise;=;interval=3", "unit=month;interval=3"},
             Case{"unit=day;interval=0", "unit=day;interval=1"},
             Case{"unit=day;interval=-4", "unit=day;interval=1"},
             Case{"unit=day;interval=2x", "unit=day;interval=1"},
             Case{"unit=day;interval=99999999999999999999", "unit=day;interval=1"},
             Case{"unit=week;weekdays=0,8,x,7", "unit=week;interval=1;weekdays=7"},
             Case{"unit=month;weekdays=2,4", "unit=month;interval=1"},
             Case{"unit=year;dayOfMonth=32;monthOfYear=13", "unit=year;interval=1"},
             Case{"unit=month;dayOfMonth=0", "unit=month;interval=1"},
             Case{"", "none"},
             Case{"interval=2", "none"},
             Case{"unit=", "none"},
             Case{"unit=Day", "none"},
             Case{"unit=fortnight;interval=1", "none"},
             Case{"Unit=day", "none"},
         }) {
        const auto rule = RecurrenceRule::fromStorageString(text);
        EXPECT_EQ(rule ? rule->storageString() : "none", read) << text;
    }
}

TEST(RecurrenceRuleText, DescriptionsAreInPlainEnglish) {
    struct Case {
        RecurrenceRule rule;
        const char* text;
    };
    for (const auto& [rule, text] : {
             Case{{.unit = Unit::day}, "Every day"},
             Case{{.unit = Unit::week}, "Every week"},
             Case{{.unit = Unit::month}, "Every month"},
             Case{{.unit = Unit::year}, "Every year"},
             Case{{.unit = Unit::day, .interval = 3}, "Every 3 days"},
             Case{{.unit = Unit::month, .interval = 2, .dayOfMonth = 31}, "Every 2 months"},
             Case{{.unit = Unit::month, .dayOfMonth = 31}, "Every month on the 31st"},
             Case{{.unit = Unit::year, .dayOfMonth = 29, .monthOfYear = 2}, "Every year"},
             Case{{.unit = Unit::week, .weekdays = {6, 5, 4, 3, 2}}, "Every weekday"},
             Case{
                 {.unit = Unit::week, .interval = 2, .weekdays = {2, 3, 4, 5, 6}},
                 "Every 2 weeks on Mon, Tue, Wed, Thu, Fri"},
             Case{{.unit = Unit::week, .weekdays = {7, 1}}, "Every Sun, Sat"},
             Case{{.unit = Unit::week, .interval = 3, .weekdays = {5}}, "Every 3 weeks on Thu"},
             // Weekdays show with any unit; editors and storage keep them for weeks only.
             Case{
                 {.unit = Unit::day, .weekdays = {2, 3, 4, 5, 6}}, "Every Mon, Tue, Wed, Thu, Fri"},
         }) {
        EXPECT_EQ(rule.description(), text);
    }
}

TEST(RecurrenceRuleText, OrdinalsEndAsTheyAreSpoken) {
    struct Case {
        int number;
        const char* text;
    };
    for (const auto& [number, text] : {
             Case{0, "0th"},
             Case{1, "1st"},
             Case{2, "2nd"},
             Case{3, "3rd"},
             Case{4, "4th"},
             Case{11, "11th"},
             Case{12, "12th"},
             Case{13, "13th"},
             Case{21, "21st"},
             Case{22, "22nd"},
             Case{23, "23rd"},
             Case{101, "101st"},
             Case{111, "111th"},
             Case{1013, "1013th"},
         }) {
        EXPECT_EQ(ordinal(number), text);
    }
}

}  // namespace
}  // namespace tesserine
