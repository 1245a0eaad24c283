#include "app/pages/FileExports.h"

#include "app/state/WindowFixture.h"
#include "base/Files.h"

#include <gtest/gtest.h>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>

#include <string>

namespace tesserine::app {
namespace {

class FileExportsTest : public test::WindowFixture {
protected:
    ~FileExportsTest() override { environment->waitForBackground(); }

    FileWritten note() {
        return [this](const QString& file) { written = file.toStdString(); };
    }
    /// Types the name into the dialog and confirms it.
    void answer(const char* name, const std::filesystem::path& file) {
        auto* const dialog = window.findChild<QFileDialog*>(name);
        ASSERT_NE(dialog, nullptr);
        dialog->setOption(QFileDialog::DontConfirmOverwrite);  // asked by the dialog itself
        dialog->findChild<QLineEdit*>("fileNameEdit")
            ->setText(QString::fromStdString(file.string()));
        static_cast<QDialog*>(dialog)->accept();
    }
    static std::string content(const std::filesystem::path& file) {
        return std::string(textOf(files::read(file, 1'000'000)));
    }

    QWidget window;
    std::string written;
};

TEST_F(FileExportsTest, ANoteIsWrittenAsItsFileNameSays) {
    const CDNote& plan = addNote("Plan", "<p>by <strong>train</strong></p>");
    struct Case {
        const char* file;
        const char* written;
        const char* part;
    };
    for (const Case& each : {
             Case{"plan.md", "plan.md", "by **train**"},
             Case{"plan.txt", "plan.txt", "by train"},
             Case{"plan", "plan.html", "<strong>train</strong>"},
             Case{"plan.md", "plan.md", "by **train**"},  // once more: replaces the file
         }) {
        written.clear();
        exportNote(*environment, *plan.id, &window, note());
        answer("exportNoteDialog", folder / each.file);
        ASSERT_TRUE(waitUntil([&] { return !written.empty(); })) << each.file;
        EXPECT_EQ(written, (folder / each.written).string());
        EXPECT_NE(content(written).find(each.part), std::string::npos) << content(written);
        settle();
    }
}

TEST_F(FileExportsTest, TasksReplaceACalendarOnceTheNewOneIsWhole) {
    addTask("Pay rent tomorrow");
    const auto file = folder / "tasks.ics";
    files::writeNew(file, bytesOf("old"));
    exportTasks(*environment, &window, note());
    answer("exportTasksDialog", file);
    ASSERT_TRUE(waitUntil([&] { return !written.empty(); }));
    EXPECT_NE(content(file).find("SUMMARY:Pay rent\r\n"), std::string::npos) << content(file);
    EXPECT_FALSE(std::filesystem::exists(folder / "tasks.ics.part"));
}

TEST_F(FileExportsTest, SaysWhyNothingWasWritten) {
    const CDNote& plan = addNote("Plan");
    exportNote(*environment, *plan.id, &window, note());
    const auto file = folder / "plan.md";
    environment->notes().deleteNote(context(), *context().find<CDNote>(*plan.id));
    context().save();
    answer("exportNoteDialog", file);
    const auto notice = [&] { return window.findChild<QMessageBox*>("notice"); };
    ASSERT_TRUE(waitUntil([&] { return notice() != nullptr; }));
    EXPECT_EQ(notice()->text(), "The note could not be found.");
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_EQ(written, "");
}

}  // namespace
}  // namespace tesserine::app
