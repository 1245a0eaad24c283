#pragma once

#include <QDialog>

#include <string>

class QHBoxLayout;

namespace tesserine::app {

class Pictures;

/// Two versions of a note side by side, with what differs marked. Shown over the window; what can
/// be done about them stands below. Return closes it: no version goes by a key pressed too often.
class ComparisonView final : public QDialog {
    Q_OBJECT

public:
    struct Side {
        QString heading;
        QString title;
        std::string html;
    };
    /// `pictures` outlives it.
    ComparisonView(const Side& left, const Side& right, Pictures& pictures, QWidget* parent);

    /// Adds a button that closes the view with `result` (1 or more).
    void addChoice(const QString& title, int result);

private:
    void addSummary(const QString& summary);

    QHBoxLayout* const buttons_;
};

}  // namespace tesserine::app
