#include "core/import/LinkTable.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

TEST(LocalAddress, AddressesAreTakenApartAndKeptInTheFolder) {
    struct Case {
        const char* address;
        const char* path;  // or what else it is
    };
    for (const auto& [address, path] : {
             Case{"b.md", "Work/b.md"},
             Case{"./x/../b%20c.md?raw=1#part", "Work/b c.md"},
             Case{"../b.md", "b.md"},
             Case{"sub\\b.md", "Work/sub/b.md"},
             Case{" b.md ", "Work/b.md"},
             Case{"100%.md", "Work/100%.md"},
             Case{"a%2fb.md", "Work/a/b.md"},
             Case{"%00b.md", "Work/b.md"},
             Case{"..", ""},
             Case{"note:one.md", "elsewhere"},
             Case{"https://example.org/b.md", "elsewhere"},
             Case{"MAILTO:a@b.c", "elsewhere"},
             Case{"//example.org/b.md", "elsewhere"},
             Case{"#part", "elsewhere"},
             Case{"", "elsewhere"},
             Case{"../../b.md", "refused"},
             Case{"x/../../../b.md", "refused"},
             Case{"%2e%2e/%2e%2e/b.md", "refused"},
             Case{"/etc/passwd", "refused"},
             Case{R"(\\server\share)", "refused"},
             Case{"c:/x.png", "refused"},
             Case{"~/x.png", "refused"},
             Case{"File:///etc/passwd", "refused"},
         }) {
        SCOPED_TRACE(address);
        const LocalAddress found = localAddress(address, "Work/a.md");
        switch (found.kind) {
        case LocalAddress::Kind::file: EXPECT_EQ(found.path, path); break;
        case LocalAddress::Kind::elsewhere: EXPECT_STREQ(path, "elsewhere"); break;
        case LocalAddress::Kind::refused: EXPECT_STREQ(path, "refused"); break;
        }
    }
}

TEST(LinkTable, FilesAreFoundByPathAndByName) {
    const std::vector<SourceFile> files = {
        {0, "Plan.md"},
        {0, "plan.txt"},
        {0, "Deep/Er/Note.md"},
        {0, "Deep/Note.md"},
        {0, "Work/Caf\u0065\u0301.md"},  // decomposed, as some systems store it
        {1, "Other.md"},
        {0, "v1.2 draft.md"},
    };
    const LinkTable table(files, LinkTable::Extension::optional);
    const auto at = [&](std::uint32_t root, const char* path) {
        const auto file = table.atPath(root, path);
        return file ? files[*file].relative : "none";
    };
    EXPECT_EQ(at(0, "Plan.md"), "Plan.md");
    EXPECT_EQ(at(0, "plan.txt"), "plan.txt");
    EXPECT_EQ(at(0, "PLAN"), "Plan.md");
    EXPECT_EQ(at(0, "work/caf\u00E9"), "Work/Caf\u0065\u0301.md");
    EXPECT_EQ(at(0, "v1.2 draft"), "v1.2 draft.md");
    EXPECT_EQ(at(0, "Note.md"), "none");
    EXPECT_EQ(at(0, "Other.md"), "none");
    EXPECT_EQ(at(1, "Other.md"), "Other.md");

    const auto named = [&](const char* from, const char* name) {
        const auto file = table.named({0, from}, name);
        return file ? files[*file].relative : "none";
    };
    EXPECT_EQ(named("Plan.md", "note"), "Deep/Note.md");          // the shorter path
    EXPECT_EQ(named("Deep/Er/x.md", "note"), "Deep/Er/Note.md");  // beside it
    EXPECT_EQ(named("Plan.md", "er/note"), "Deep/Er/Note.md");
    EXPECT_EQ(named("Plan.md", "Other"), "Other.md");
    EXPECT_EQ(named("Plan.md", "../../Other"), "none");
    EXPECT_EQ(named("Plan.md", ""), "none");

    const LinkTable exact(files, LinkTable::Extension::required);
    EXPECT_FALSE(exact.atPath(0, "Plan"));
    EXPECT_TRUE(exact.atPath(0, "PLAN.MD"));
}

}  // namespace
}  // namespace tesserine
