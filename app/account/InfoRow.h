#pragma once

#include <QString>
#include <QWidget>

class QLabel;

namespace tesserine::app {

/// A line of a list in the settings: what it is, a few words about it, and at most one control at
/// the end.
class InfoRow final : public QWidget {
    Q_OBJECT

public:
    /// `control` may be null; it becomes a part of the row.
    InfoRow(const QString& title, const QString& hint, QWidget* control, QWidget* parent);

    /// An empty hint takes no room.
    void setTexts(const QString& title, const QString& hint);

private:
    QLabel* const title_;
    QLabel* const hint_;
};

}  // namespace tesserine::app
