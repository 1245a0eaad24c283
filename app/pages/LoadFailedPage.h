#pragma once

#include <QWidget>

#include <filesystem>

namespace tesserine::app {

/// Stands in the window's place when the library could not be opened: the sentence that says why,
/// and three ways on. The library's file is never touched.
class LoadFailedPage final : public QWidget {
    Q_OBJECT

public:
    /// `library` is the folder that could not be opened; `sentence` what the error says.
    LoadFailedPage(
        const std::filesystem::path& library, const QString& sentence, QWidget* parent = nullptr);

signals:
    /// The user chose another folder to open.
    void folderChosen(const QString& folder);
    void quitAsked();

private:
    void chooseFolder();

    const QString folder_;
};

}  // namespace tesserine::app
