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
    // Tab leads from the tags to the body, not to a button that takes what is typed on.
    ReminderButton* const reminder_;
    QLineEdit* const title_;
    TagsField* const tags_;
};

}  // namespace tesserine::app
