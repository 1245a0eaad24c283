#pragma once

#include "base/Uuid.h"
#include "core/tasks/TaskService.h"

#include <QWidget>

#include <functional>
#include <optional>
#include <string>

class QLabel;
class QPushButton;
class QStackedWidget;

namespace tesserine::app {

class AppEnvironment;
class ConflictNotice;
class EmptyState;
class GrowingText;
class IconButton;
class LabelsField;
class PriorityButtons;
class SubtaskList;
class TickButton;

/// Everything that one task holds, to read and to change. What is typed is saved after a pause,
/// when the field is left, and by `flush`.
class TaskDetail final : public QWidget {
    Q_OBJECT

public:
    explicit TaskDetail(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Another task; none shows a hint. Saves what was typed into the one before.
    void showTask(const std::optional<Uuid>& task);
    /// None, because so many are selected.
    void showSeveral(std::size_t count);
    const std::optional<Uuid>& task() const { return task_; }
    void editTitle();
    /// Saves what was typed; false when it could not be saved.
    bool flush();

signals:
    /// The circle was clicked.
    void ticked(const tesserine::Uuid& task);
    void noteChosen(const tesserine::Uuid& note);
    void closed();
    /// Escape was pressed: the keys go back to the list.
    void left();

private:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dropTypedTitle();
    QWidget* makeForm();
    void followFields();
    CDTask* find() const;
    void load();
    void loadFields(const CDTask& task);
    void keepForeignDetails(const CDTask& task);
    bool keepAsNew();
    bool saveTexts();
    /// Changes a task and saves it: the one that a question was asked about, whichever is shown
    /// when it is answered.
    void change(const std::optional<Uuid>& id, const std::function<void(CDTask&)>& change);
    /// Asks for a note to link where there is none.
    void openNote();
    void linkNote(const std::optional<Uuid>& id, CDNote* note);
    void askDue();
    void askReminder();
    void askRecurrence();
    void askProject();
    QStringList labelNames() const;

    AppEnvironment& environment_;
    std::optional<Uuid> task_;
    ConflictNotice* const conflict_;
    QStackedWidget* const stack_;
    EmptyState* const hint_;
    TickButton* const circle_;
    GrowingText* const title_;
    QPushButton* const due_;
    QPushButton* const recurrence_;
    QPushButton* const reminder_;
    QPushButton* const project_;
    QPushButton* const note_;
    IconButton* const unlink_;
    PriorityButtons* const priority_;
    LabelsField* const labels_;
    SubtaskList* const subtasks_;
    GrowingText* const details_;
    std::string titleBefore_;                // as it was when its field got the keys
    std::optional<std::string> savedTitle_;  // what was typed since, as it was saved last
    QString shownDetails_;  // as the library had them when they were shown or saved
    QLabel* const history_;
};

}  // namespace tesserine::app
