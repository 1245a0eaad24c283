#pragma once

#include "base/Uuid.h"

#include <QWidget>

#include <optional>

class QLineEdit;

namespace tesserine::app {

class AppEnvironment;
class FlowLayout;
class OpenNote;

/// The tags of the open note: a press offers to take one away or to show the notes that have it,
/// typed names with Enter or a comma put new ones on. Changes are saved at once.
class TagsField final : public QWidget {
    Q_OBJECT

public:
    TagsField(AppEnvironment& environment, OpenNote& open, QWidget* parent);

    /// Shows the tags that the note has now.
    void refresh();
    /// Begins to type a name.
    void edit();
    /// Puts on what is being typed, as leaving the field does; Escape drops it.
    void take();

signals:
    /// The notes that have it are to be shown.
    void tagChosen(const tesserine::Uuid& tag);
    /// Escape was pressed where no name is begun.
    void left();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool takeKey(int key);
    void drop();
    void showMenu(const Uuid& tag, const QString& name, const QPoint& place);
    void add(const QString& names);
    void remove(const Uuid& id);
    void removeLast();

    AppEnvironment& environment_;
    OpenNote& open_;
    FlowLayout* const flow_;
    QLineEdit* const field_;
    std::optional<Uuid> shown_;  // the note that a name is typed for
};

}  // namespace tesserine::app
