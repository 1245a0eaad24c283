#pragma once

#include "app/assistant/UpdateWork.h"

#include <QFrame>
#include <QTimer>

#include <filesystem>

class QLabel;
class QPushButton;

namespace tesserine::app {

/// One line that tells of a newer version, hidden unless there is something to tell.
///
/// Looks by itself a while after it was made and then once a day, where that makes sense and the
/// user did not forbid it; a look that nobody asked for says nothing when it fails.
class UpdateNotice final : public QFrame {
    Q_OBJECT

public:
    explicit UpdateNotice(AppEnvironment& environment, QWidget* parent = nullptr);
    /// With another place to look at and to download to.
    UpdateNotice(
        AppEnvironment& environment,
        UpdateSource source,
        std::filesystem::path downloads,
        QWidget* parent = nullptr);

    /// Looks because the user asked for it, and answers in any case.
    void check();
    /// Looks if it is time to.
    void checkIfDue();

private:
    void build();
    void follow();
    void showDetails();
    void hideEvent(QHideEvent* event) override;

    AppEnvironment& environment_;
    const std::filesystem::path downloads_;
    UpdateWork work_;
    QTimer timer_;
    bool wasAsked_ = false;  // by the user
    bool isPutOff_ = false;  // "Later" was pressed
    QLabel* text_ = nullptr;
    QPushButton* details_ = nullptr;
};

}  // namespace tesserine::app
