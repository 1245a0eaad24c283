#pragma once

#include "base/Calendar.h"
#include "core/tasks/QuickAddParser.h"
#include "core/tasks/TaskService.h"

#include <QString>

#include <optional>
#include <vector>

namespace tesserine::app {

/// What a sentence is read against.
struct QuickAddMoment {
    Instant now;
    Calendar calendar;
    /// Whether "Buy 2 eggs" is of priority 2, as the preference says.
    bool isNumberPriority = false;
};

/// What a new task is given where its sentence says nothing: that of the list it is typed into.
struct QuickAddDefaults {
    QString projectName{};
    QString label{};
    std::optional<Instant> dueDay{};  ///< also for a time or a rule that names no day
};

/// A recognised piece of the sentence; `begin` to `end` count UTF-16 units of the text.
struct QuickAddToken {
    TokenKind kind = TokenKind::date;
    int begin = 0;
    int end = 0;

    friend bool operator==(const QuickAddToken&, const QuickAddToken&) = default;
};

/// The sentence in the quick-add bar while it is typed: what is recognised in it, what a person has
/// turned back into text, and the task that it means. Knows no widget. Main thread.
class QuickAddModel {
public:
    explicit QuickAddModel(const TaskService& tasks) : tasks_(tasks) {}

    /// Takes the text as it is after a change. What was turned back into text stays so, unless the
    /// change went through it.
    void setText(const QString& text, QuickAddMoment moment);
    void setDefaults(QuickAddDefaults defaults) { defaults_ = std::move(defaults); }
    void clear();

    /// In composed form (NFC); otherwise as it was given. Positions count its UTF-16 units.
    const QString& text() const { return text_; }
    /// In the order of the text.
    const std::vector<QuickAddToken>& tokens() const { return tokens_; }
    /// What was turned back into text, in the order of the text; `kind` is what it had been.
    const std::vector<QuickAddToken>& turnedBack() const { return turnedBack_; }

    /// The token that `position` lies in; one that ends there does not count.
    std::optional<QuickAddToken> tokenAt(int position) const;
    std::optional<QuickAddToken> tokenEndingAt(int position) const;
    void turnBack(const QuickAddToken& token);
    /// Turns back the token that was recognised last; false when there is none.
    bool turnBackNewest();
    /// Lets what was turned back at `position` be recognised again; false when nothing was.
    bool recogniseAgain(int position);

    /// The due date comes from the rule or from the list, and can be taken away.
    bool isDueSuggested() const;
    /// Good until `clear`.
    void refuseSuggestedDue() { isSuggestionRefused_ = true; }

    /// Whether there is a title, so that a task can be made.
    bool isComplete() const { return !result_.title.empty(); }
    TaskDraft draft() const;
    /// What the task will be, beside its title: "Tomorrow, Sunday 15 March at 09:00 · Every week".
    QString words() const;

private:
    std::optional<Instant> otherDay() const;
    TaskDraft draftFor(Instant day) const;
    void parse();
    void followEdit(const QString& newText);
    void noteAppearances();

    const TaskService& tasks_;
    QuickAddDefaults defaults_;
    std::optional<QuickAddMoment> moment_;
    QString text_;
    QuickAddResult result_;
    std::vector<TextRange> leftAlone_;  // of the sentence, not to be recognised
    std::vector<QuickAddToken> tokens_;
    std::vector<QuickAddToken> turnedBack_;
    std::vector<QuickAddToken> appeared_;  // the tokens, the one recognised last at the end
    bool isSuggestionRefused_ = false;
};

}  // namespace tesserine::app
