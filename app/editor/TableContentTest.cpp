#include "app/editor/TableContent.h"

#include "core/body/CanonicalBody.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine::app {
namespace {

TEST(TableContent, KeepsWhatIsNotChanged) {
    const std::string html =
        "<table><tr><th>A</th><th>B</th></tr><tr><td><a href=\"https://e.org\">x</a></td>"
        "<td style=\"text-align: right\">1<br>2</td></tr></table>";
    auto content = TableContent::of(html);
    ASSERT_TRUE(content);
    EXPECT_EQ(content->html(), html);
    content->setText(1, 1, "3 < 4\n5");
    content->insertRow(2);
    content->setText(2, 0, "y");
    content->insertColumn(1);
    content->removeRow(7);
    const std::string changed = content->html();
    EXPECT_EQ(
        changed,
        "<table><tr><th>A</th><th></th><th>B</th></tr>"
        "<tr><td><a href=\"https://e.org\">x</a></td><td></td>"
        "<td style=\"text-align: right\">3 &lt; 4<br>5</td></tr>"
        "<tr><td>y</td><td></td><td></td></tr></table>");
    EXPECT_TRUE(isCanonical(changed));
    content->removeColumn(1);
    content->removeColumn(1);
    content->removeColumn(0);  // the last one stays
    EXPECT_EQ(content->columnCount(), 1U);
}

TEST(TableContent, LeavesAloneWhatIsNotSimple) {
    for (const char* html : {
             "<p>a</p>",
             "<table></table>",
             "<table><tr><td colspan=\"2\">a</td></tr></table>",
             "<table><tr><td><p>a</p></td></tr></table>",
             "<table><tr><td><table><tr><td>a</td></tr></table></td></tr></table>",
             "<table><caption>a</caption><tr><td>b</td></tr></table>",
         }) {
        SCOPED_TRACE(html);
        EXPECT_FALSE(TableContent::of(html));
    }
    // Rows of different lengths are filled up.
    const auto ragged =
        TableContent::of("<table><tr><td>a</td></tr><tr><td>b</td><td>c</td></tr></table>");
    ASSERT_TRUE(ragged);
    EXPECT_EQ(ragged->columnCount(), 2U);
    EXPECT_EQ(TableContent::of(TableContent(2, 2).html())->rowCount(), 2U);
}

}  // namespace
}  // namespace tesserine::app
