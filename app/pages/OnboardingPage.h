#pragma once

#include "app/pages/ColumnPage.h"

#include <filesystem>

class QLabel;

namespace tesserine::app {

/// The first thing a new user sees: where the library will lie, and how to begin. Nothing is
/// written before a way was chosen.
class OnboardingPage final : public ColumnPage {
    Q_OBJECT

public:
    /// `proposed` is where the library will lie unless the user chooses another folder.
    explicit OnboardingPage(const std::filesystem::path& proposed, QWidget* parent = nullptr);

signals:
    /// Make a library in the folder, with the notes that teach.
    void freshStartChosen(const QString& folder);
    /// Make a library in the folder and bring notes in from elsewhere.
    void importChosen(const QString& folder);
    /// Make a library in the folder that is to be filled by sync, and show the way in.
    void signInChosen(const QString& folder);
    /// Open the library that is in the folder already.
    void libraryChosen(const QString& folder);

private:
    void chooseFolder();
    void showPlace();

    QString folder_;
    QLabel* const place_;
};

}  // namespace tesserine::app
