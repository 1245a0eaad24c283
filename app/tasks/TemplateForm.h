#pragma once

#include "base/Calendar.h"
#include "core/tasks/TaskTemplateContent.h"

#include <QPointer>
#include <QWidget>

#include <optional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace tesserine::app {

class AppEnvironment;
class GrowingText;
class LabelsField;
class PriorityButtons;

/// The fields of a task template.
class TemplateForm final : public QWidget {
    Q_OBJECT

public:
    explicit TemplateForm(AppEnvironment& environment, QWidget* parent = nullptr);

    void setContent(const TaskTemplateContent& content);
    TaskTemplateContent content() const;
    /// Puts what was changed since `setContent` into what the library holds; tells whether another
    /// program had changed something else.
    bool putInto(TaskTemplateContent& stored) const;
    /// Whether something was changed since `setContent`.
    bool isEdited() const { return isEdited_; }
    /// What is shown was saved.
    void markSaved();
    void editName();
    /// Closes what asks about the template that is shown.
    void dropQuestion();

signals:
    /// A field was changed; at every key while a text is typed.
    void edited();

private:
    void changeEvent(QEvent* event) override;
    void arrange();
    void follow();
    void edit();
    void showChoices();
    std::optional<TimeOfDay> typedTime() const;
    void askRecurrence();
    void askProject();

    AppEnvironment& environment_;
    TaskTemplateContent content_;  // what no field shows as it is kept: rule, project
    TaskTemplateContent saved_;    // as the fields were when they were filled or saved
    bool isEdited_ = false;
    bool isFilling_ = false;
    QPointer<QWidget> question_;
    QLineEdit* const name_;
    QLineEdit* const title_;
    QCheckBox* const isDue_;
    QSpinBox* const dueDays_;
    QLineEdit* const dueTime_;
    QLabel* const noTime_;  // says that what is typed there cannot be read
    QPushButton* const recurrence_;
    QPushButton* const project_;
    PriorityButtons* const priority_;
    LabelsField* const labels_;
    GrowingText* const subtasks_;
    GrowingText* const notes_;
};

}  // namespace tesserine::app
