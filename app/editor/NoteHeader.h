#pragma once

#include <QWidget>

class QLineEdit;

namespace tesserine::app {

class AppEnvironment;
class OpenNote;
class ReminderButton;
class TagsField;

/// What stands above the body of a note and keeps to its column: title, tags, reminder.
class NoteHeader final : public QWidget {
    Q_OBJECT

public:
    NoteHeader(AppEnvironment& environment, OpenNote& open, QWidget* parent);

    QLineEdit& title() { return *title_; }
    TagsField& tags() { return *tags_; }
    ReminderButton& reminder() { return *reminder_; }

    /// Leaves `side` pixels empty at both sides.
    void setColumn(int side);
    /// Shows tags and reminder as they are now.
    void refresh();

private:
    // In the order of Tab: from the title to the body, where what is typed on becomes no tag and
    // presses no button.
    ReminderButton* const reminder_;
    TagsField* const tags_;
    QLineEdit* const title_;
};

}  // namespace tesserine::app
