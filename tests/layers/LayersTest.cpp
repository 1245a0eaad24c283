#include "tests/layers/LayerRules.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace tesserine {
namespace {

TEST(Layers, OnlyDownwardIncludesAreAllowed) {
    struct Case {
        const char* path;
        const char* include;
        const char* fault;  // empty: allowed
    };
    for (const auto& [path, include, fault] : {
             Case{"core/services/NoteService.h", "\"core/store/StoreContext.h\"", ""},
             Case{"core/services/NoteService.h", "\"base/sqlite/Statement.h\"", ""},
             Case{"base/Text.h", "\"core/model/Schema.h\"", "base may not include from core/model"},
             Case{
                 "core/store/A.h",
                 "\"core/body/B.h\"",
                 "core/store may not include from core/body"},
             Case{"base/A.h", "<core/model/B.h>", "base may not include from core/model"},
             Case{"search/A.h", "\"core/services/B.h\"", ""},
             Case{"search/A.h", "\"core/tasks/B.h\"", "search may not include from core/tasks"},
             Case{"ai/A.cpp", "\"core/model/CDNote.h\"", ""},
             Case{"scans/A.cpp", "\"core/store/B.h\"", "scans may not include from core/store"},
             Case{"core/import/A.cpp", "\"core/export/B.h\"", "may not include from core/export"},
             Case{"cli/Session.cpp", "\"ai/Asking.h\"", ""},
             Case{"cli/Session.cpp", "\"app/Window.h\"", "cli may not include from app"},
             Case{"app/tasks/A.cpp", "\"app/state/Place.h\"", ""},
             Case{
                 "app/tasks/A.cpp",
                 "\"app/editor/A.h\"",
                 "app/tasks may not include from app/editor"},
             Case{"app/look/A.cpp", "\"app/state/Place.h\"", "may not include from app/state"},
             Case{"app/shell/A.cpp", "\"app/desktop/Tray.h\"", ""},
             Case{"tests/journeys/A.cpp", "\"cli/Session.h\"", ""},
             // Helpers of tests are for tests.
             Case{"base/TextTest.cpp", "\"tests/support/TemporaryFolder.h\"", ""},
             Case{"base/Text.cpp", "\"tests/support/TemporaryFolder.h\"", "from tests"},
             Case{"base/TextFixture.h", "\"tests/support/TemporaryFolder.h\"", ""},
             Case{"base/Text.h", "\"base/TextFixture.h\"", "base may not include from base"},
             Case{"tests/support/A.h", "\"cli/Session.h\"", "tests may not include from cli"},
             // A test stands on the floor of its unit.
             Case{"base/TextTest.cpp", "\"core/model/Schema.h\"", "from core/model"},
             Case{"base/Text.cpp", "\"Text.h\"", "is not a path from the root"},
             Case{"basement/Text.cpp", "<string>", "no floor is laid down for this folder"},
             Case{"core/Text.cpp", "<string>", "no floor is laid down for this folder"},
             Case{"core/body/A.cpp", "<QString>", "Qt lives in app only"},
             Case{"core/body/A.cpp", "<QtWidgets>", "Qt lives in app only"},
             Case{"app/Window.cpp", "<QString>", ""},
             Case{"core/store/A.cpp", "<sqlite3.h>", "SQLite is not to be met here"},
             Case{"base/sqlite/Statement.cpp", "<sqlite3.h>", ""},
         }) {
        SCOPED_TRACE(std::string(path) + " includes " + include);
        const auto found = layers::faults(path, std::string("\n #  include ") + include + "\n");
        if (*fault == '\0') {
            EXPECT_TRUE(found.empty()) << found.front();
            continue;
        }
        ASSERT_EQ(found.size(), 1U);
        EXPECT_NE(found.front().find(fault), std::string::npos) << found.front();
    }
}

bool isSource(const std::filesystem::path& path) {
    return path.extension() == ".h" || path.extension() == ".cpp" || path.extension() == ".inc";
}

bool isOursToRead(const std::filesystem::path& folder) {
    const std::string name = folder.filename().string();
    return !name.starts_with('.') && name != "build";
}

TEST(Layers, TheTreeKeepsItsFloors) {
    const std::filesystem::path root = TESSERINE_SOURCE_FOLDER;
    std::size_t filesRead = 0;
    for (auto entry = std::filesystem::recursive_directory_iterator(root);
         entry != std::filesystem::recursive_directory_iterator();
         ++entry) {
        if (entry->is_directory() && !isOursToRead(entry->path())) {
            entry.disable_recursion_pending();
        }
        if (!entry->is_regular_file() || !isSource(entry->path())) continue;

        std::ifstream file(entry->path());
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::string path = entry->path().lexically_relative(root).generic_string();
        for (const std::string& fault : layers::faults(path, text)) {
            ADD_FAILURE() << fault;
        }
        ++filesRead;
    }
    EXPECT_GT(filesRead, 3U) << "the tree was not found at " << root;
}

}  // namespace
}  // namespace tesserine
