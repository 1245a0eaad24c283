#pragma once

#include "app/state/Job.h"
#include "base/Uuid.h"
#include "sync/WireRecords.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace tesserine {
class SyncClient;
}

namespace tesserine::app {

class AppEnvironment;

/// Makes a public link to one note, and ends it. Whoever has the link reads the note as the service
/// holds it.
class ShareDialog final : public QDialog {
    Q_OBJECT

public:
    /// Asks the service at once how the note is shared; deletes itself when it is closed. Somebody
    /// is signed in.
    ShareDialog(AppEnvironment& environment, const Uuid& note, QWidget* parent);

private:
    /// What the service said; the link itself is told only when it is made.
    struct Answer {
        bool isShared = false;
        QString url{};
    };
    using Question = std::function<Answer(SyncClient& client, const std::stop_token& stop)>;
    void build(const QString& title);
    void ask(Question question);
    void showAnswer(const Answer& answer);
    void fail(const QString& sentence);
    void fitHeight();
    void closeWithItsNote();
    void makeLink();
    void stopSharing();

    AppEnvironment& environment_;
    const Uuid note_;
    QLabel* const state_;
    QLineEdit* const link_;
    QPushButton* const copy_;
    QPushButton* const make_;
    QPushButton* const stop_;
    bool isShared_ = false;  // as the service said last
    Job job_;
};

}  // namespace tesserine::app
