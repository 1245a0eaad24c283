#pragma once

#include "app/tasks/QuickAddModel.h"
#include "base/Uuid.h"

#include <QFrame>

#include <string>

class QLabel;
class QPushButton;

namespace tesserine::app {

class AppEnvironment;
class IconButton;
class QuickAddField;

/// The bar in which one typed sentence becomes a task: tokens in colour, the task in words below,
/// Enter makes it, Escape clears, and Ctrl+Z brings back what that took away.
class QuickAddBar final : public QFrame {
    Q_OBJECT

public:
    /// A number alone sets the priority; off unless set.
    static constexpr const char* numberIsPriorityKey = "tesserine.quickAddNumberIsPriority";

    explicit QuickAddBar(AppEnvironment& environment, QWidget* parent = nullptr);

    /// What tasks are given that say nothing of it.
    void setDefaults(QuickAddDefaults defaults);
    /// Begins a sentence, as one that came from elsewhere.
    void begin(const QString& sentence);
    /// A sentence that waits for Enter is kept under this name of the preferences, and shown again
    /// at the next start.
    void keepUnder(const std::string& name);
    /// Writes it down, as before the program ends.
    void keep();

signals:
    void created(const tesserine::Uuid& task);
    /// Escape was pressed in the empty bar, or the key that leads down to the list.
    void left();

private:
    QuickAddMoment moment() const;
    QStringList names(QChar sign);
    void create();
    void showSentence(const QString& sentence);
    void clear();
    void showMeaning(const QString& problem = {});
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    AppEnvironment& environment_;
    QuickAddModel model_;
    std::string keptUnder_;
    QStringList projects_;  // read when first needed
    QStringList labels_;
    QuickAddField* const field_;
    QLabel* const words_;
    IconButton* const refuse_;
    QPushButton* const add_;
};

}  // namespace tesserine::app
