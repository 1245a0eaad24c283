#pragma once

#include "app/pages/ColumnPage.h"
#include "app/state/AppEnvironment.h"

#include <filesystem>
#include <optional>

class QPushButton;

namespace tesserine::app {

/// Stands in the window's place when the library could not be opened: the sentence that says why,
/// and ways on. Nothing touches the library's file but the restore of a backup, which keeps it.
class LoadFailedPage final : public ColumnPage {
    Q_OBJECT

public:
    /// What could not be opened.
    struct Failure {
        std::filesystem::path library;        ///< its folder
        QString sentence;                     ///< what the error says
        std::optional<AppSetting> setting{};  ///< none: no backup can be put there either
    };
    explicit LoadFailedPage(Failure failure, QWidget* parent = nullptr);

signals:
    /// A backup stands in the library's place.
    void restored();
    /// The user chose another folder to open.
    void folderChosen(const QString& folder);
    void quitAsked();

private:
    QPushButton* makeRestoreButton();
    void chooseFolder();

    const QString folder_;
    const std::optional<AppSetting> setting_;
};

}  // namespace tesserine::app
