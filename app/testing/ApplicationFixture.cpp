#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QByteArray>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

/// Nothing of the person who runs the tests is read or written: no settings, no folders, no bus.
void standAlone(const std::filesystem::path& folder) {
    for (const char* name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"}) {
        qputenv(name, QByteArray::fromStdString(folder.string()));
    }
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(folder.string()));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
}

}  // namespace

int main(int count, char** words) {
    ::testing::InitGoogleTest(&count, words);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    const tesserine::test::TemporaryFolder folder;
    standAlone(folder.path());
    const QApplication application(count, words);
    return RUN_ALL_TESTS();
}
