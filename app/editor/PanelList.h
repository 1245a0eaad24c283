#pragma once

#include <QListWidget>

namespace tesserine::app {

/// A list in the pane beside a note: entries of one or two lines, and one line that says so where
/// there is none.
class PanelList : public QListWidget {
    Q_OBJECT

public:
    /// `name` for screen readers and as object name, `empty` is shown while there is nothing.
    PanelList(const QString& objectName, const QString& name, QString empty, QWidget* parent);

    /// `second` is shown smaller below `first`, unless it is empty. `value` comes back when the
    /// entry is chosen.
    QListWidgetItem* add(const QString& first, const QString& second, const QVariant& value);

signals:
    /// By Enter or a click.
    void chosen(const QVariant& value);

private:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

    QString empty_;
};

}  // namespace tesserine::app
