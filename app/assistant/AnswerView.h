#pragma once

#include "ai/AskTesserine.h"
#include "base/Calendar.h"

#include <QTextBrowser>

#include <optional>

class QTextCursor;

namespace tesserine::app {

/// An answer of the assistant with its sources below it.
///
/// All of it is shown letter by letter: nothing that the model wrote is read as markup, and no
/// picture or other resource is ever loaded. The numbers of its sources can be pressed.
class AnswerView final : public QTextBrowser {
    Q_OBJECT

public:
    explicit AnswerView(QWidget* parent = nullptr);

    /// The days of the sources are told in `calendar`.
    void showAnswer(const AskResult& result, Instant now, const Calendar& calendar);
    void clearAnswer();

signals:
    /// The source with this index, from 1, was chosen.
    void citationChosen(int index);

private:
    struct Shown {
        AskResult result;
        Instant now;
        Calendar calendar;
    };
    void write();
    void writeText(QTextCursor& cursor);
    void writeSources(QTextCursor& cursor);
    void writeSource(QTextCursor& cursor, const NoteCitation& citation);
    void writeWebSources(QTextCursor& cursor);
    void follow(const QUrl& link);
    QVariant loadResource(int type, const QUrl& name) override;
    void changeEvent(QEvent* event) override;

    std::optional<Shown> shown_;
};

}  // namespace tesserine::app
