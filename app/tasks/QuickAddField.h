#pragma once

#include "app/tasks/QuickAddModel.h"

#include <QTextEdit>

#include <functional>
#include <optional>

class QCompleter;
class QStringListModel;

namespace tesserine::app {

/// One line of text that shows the tokens of a quick-add sentence in colour. A click on a token, or
/// Backspace right behind it, or Ctrl+Z turns it back into text; a click there, or Ctrl+Z right
/// after Backspace, recognises it again.
class QuickAddField final : public QTextEdit {
    Q_OBJECT

public:
    using Moment = std::function<QuickAddMoment()>;
    /// The names of projects (#) or labels (@).
    using Names = std::function<QStringList(QChar sign)>;

    /// `model` outlives the field.
    QuickAddField(QuickAddModel& model, Moment moment, Names names, QWidget* parent = nullptr);

    /// Takes the sentence away; Ctrl+Z brings it back, which it does not after `clear`.
    void takeAway();
    /// Reads the sentence again, as when the day has changed.
    void readAgain();

signals:
    /// The sentence, or what of it is recognised, has changed.
    void sentenceChanged();
    /// Enter was pressed.
    void submitted();
    /// Escape was pressed.
    void escaped();
    /// The key was pressed that leads from a line to the one below.
    void leftDownwards();

private:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {160, sizeHint().height()}; }

    bool turnBackBy(const QKeyEvent& event);
    bool toggleAt(int position);
    void takeText();
    void showTokens();
    void offerNames();
    void takeName(const QString& name);
    void paintToken(QPainter& painter, const QuickAddToken& token) const;

    QuickAddModel& model_;
    Moment moment_;
    Names names_;
    QStringListModel* const offered_;
    QCompleter* const completer_;
    bool isTakingText_ = false;
    std::optional<int> plainFrom_;  // the token that Backspace has turned back just now
};

/// What a token is coloured with.
QColor colorOf(TokenKind kind);

}  // namespace tesserine::app
