#pragma once

#include <QDialog>

#include <filesystem>
#include <string>

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace tesserine::app {

class UpdateWork;

/// A newer version: what is new in it, and what can be done about it. What the feed wrote is shown
/// letter by letter. Deleted when it is closed.
class UpdateDialog final : public QDialog {
    Q_OBJECT

public:
    /// `work` has an offer and outlives the dialog. Its file goes to `downloads`.
    UpdateDialog(UpdateWork& work, std::filesystem::path downloads, QWidget* parent);

private:
    QWidget* makeNotes();
    QWidget* makeButtons();
    void follow();
    void act();

    UpdateWork& work_;
    const std::filesystem::path downloads_;
    const std::string version_;  // that is shown
    QLabel* state_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QPushButton* main_ = nullptr;  // Download, then Show in Folder
    QPushButton* cancel_ = nullptr;
    QPushButton* skip_ = nullptr;
    QPushButton* later_ = nullptr;
};

/// Where files are downloaded to.
std::filesystem::path downloadsFolder();

}  // namespace tesserine::app
