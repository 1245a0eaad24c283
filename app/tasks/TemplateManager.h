#pragma once

#include "base/Uuid.h"

#include <QWidget>

#include <optional>

class QLabel;
class QListWidget;
class QPushButton;
class QStackedWidget;
class QTimer;

namespace tesserine {
struct TaskTemplateContent;
}

namespace tesserine::app {

class AppEnvironment;
class TemplateForm;

/// The task templates, each with one line that says what it makes: changed, used, made, deleted.
/// What is typed is saved after a pause, when another template is shown, and by `flush`.
class TemplateManager final : public QWidget {
    Q_OBJECT

public:
    explicit TemplateManager(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Reads the templates; called when the page comes into sight.
    void open();
    void showTemplate(const Uuid& id);
    /// Saves what was typed; false when it could not be saved.
    bool flush();

signals:
    /// A task was made of a template.
    void used(const tesserine::Uuid& task);

private:
    void reload();
    void take();
    void showContent(const TaskTemplateContent& content);
    void markShown();
    void create();
    void use();
    void askRemove();
    void showProblem(const QString& sentence);
    std::optional<Uuid> idAt(int row) const;
    QWidget* makeRight();

    AppEnvironment& environment_;
    QListWidget* const list_;
    QStackedWidget* const stack_;
    TemplateForm* const form_;
    QLabel* const summary_;
    QTimer* const pause_;
    std::optional<Uuid> shown_;
    bool isSaving_ = false;
};

}  // namespace tesserine::app
