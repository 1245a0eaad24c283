#pragma once

#include "app/state/AppEnvironment.h"
#include "app/state/Job.h"
#include "sync/SyncService.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <stop_token>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tesserine::app {

/// A part of the sync settings: a heading, and below it what the service is asked for. One question
/// is on its way at a time, and one may wait; where one fails, its sentence stands at the end.
class Section : public QWidget {
    Q_OBJECT

public:
    /// An empty heading takes no room.
    Section(const QString& heading, AppEnvironment& environment, QWidget* parent);

    /// Whether a failure is shown.
    bool hasFailed() const;

signals:
    /// The last question failed, as is shown.
    void notAnswered();

protected:
    AppEnvironment& environment() const { return environment_; }
    QVBoxLayout& column() const { return *column_; }
    /// A button that is not pressed by Return.
    QPushButton* makeButton(const QString& title, const char* objectName);

    /// Asks the service off the main thread, then gives the answer to `show`. Waits while another
    /// question is on its way; does nothing without a service. Goes on when the section goes.
    template <class Answer>
    void ask(
        std::function<Answer(SyncClient& client, const std::stop_token& stop)> question,
        std::function<void(const Answer& answer)> show);
    void showFailure(const QString& sentence);
    /// Ends something at the service; that somebody else has ended it already is no failure.
    static void end(const std::function<void()>& request);

private:
    void askNext();
    void bringFailureIntoView();

    AppEnvironment& environment_;
    QVBoxLayout* const column_;
    QLabel* const failure_;
    Job job_;
    std::function<void()> next_;  // to be asked when the present question is answered
};

template <class Answer>
void Section::ask(
    std::function<Answer(SyncClient& client, const std::stop_token& stop)> question,
    std::function<void(const Answer& answer)> show) {
    SyncService* const service = environment_.sync();
    if (service == nullptr) return;
    if (job_.isRunning()) {
        next_ = [this, question, show] { ask(question, show); };
        return;
    }
    showFailure({});
    const auto answer = std::make_shared<Answer>();
    job_.start(
        [client = &service->client(), question = std::move(question), answer](
            const Job::Given& given) { *answer = question(*client, given.stop); },
        [answer, show = std::move(show)] { show(*answer); });
}

}  // namespace tesserine::app
