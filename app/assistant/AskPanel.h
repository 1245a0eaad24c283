#pragma once

#include "app/assistant/Assistant.h"
#include "app/state/Job.h"
#include "base/Uuid.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QStackedWidget;

namespace tesserine::app {

class AnswerView;
class AskFilters;
class EmptyState;

/// Asks the assistant about the notes and shows its answer with the notes it is from.
///
/// Nothing leaves the machine before "Ask" was pressed and the user has seen, once, what is sent. A
/// question that got no answer stays as it was typed. Belongs to the main thread and waits for
/// nothing there.
class AskPanel final : public QWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AskPanel)

public:
    explicit AskPanel(AppEnvironment& environment, QWidget* parent = nullptr);
    ~AskPanel() override;

    /// Shows itself, ready for a question to be typed.
    void begin();
    /// Cancels what is being asked.
    void cancel();

signals:
    /// A source was chosen: its note is to be opened where it holds `words` (empty: from its top).
    void citationChosen(const tesserine::Uuid& note, const QString& words);
    void settingsWanted();
    void closed();

private:
    /// A question on its way: what was made of it and what came back.
    struct Exchange {
        FramedQuestion framed;
        AskResult result;
        std::string destination;
    };

    void build();
    QWidget* makeHead();
    QWidget* makeQuestion();
    QWidget* makeAnswer();
    std::optional<AskedQuestion> typed() const;
    void ask();
    void showRequest();
    void send(std::function<FramedQuestion(const Assistant&, StoreContext&)> frame);
    void run(
        std::function<void(Exchange&, const Assistant&, const Job::Given&)> work,
        std::function<void(const std::shared_ptr<const Exchange>&)> done);
    void showAnswer(const std::shared_ptr<const Exchange>& exchange);
    void showFailure(const QString& sentence);
    void showSentence(const QString& sentence);
    void showBusy(bool isBusy);
    bool hasKeys() const;
    void open(int citation);
    void refresh();
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

    AppEnvironment& environment_;
    Job job_;
    QStackedWidget* const pages_;
    EmptyState* const off_;
    QPlainTextEdit* question_ = nullptr;
    AskFilters* filters_ = nullptr;
    QPushButton* ask_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QLabel* state_ = nullptr;
    AnswerView* answer_ = nullptr;
    QLabel* figures_ = nullptr;
    std::shared_ptr<const Exchange> shown_;
};

}  // namespace tesserine::app
