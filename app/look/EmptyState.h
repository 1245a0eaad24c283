#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace tesserine::app {

class IconLabel;

/// What a place shows while it holds nothing: an icon, one line that says so, one that teaches,
/// and at most one button that does the obvious next thing.
class EmptyState final : public QWidget {
    Q_OBJECT

public:
    /// What it shows; without `action` there is no button.
    struct Content {
        QString icon;
        QString title;
        QString text;
        QString action{};
    };

    explicit EmptyState(const Content& content, QWidget* parent = nullptr);

    void setContent(const Content& content);

signals:
    /// The button was pressed.
    void acted();

private:
    void changeEvent(QEvent* event) override;
    void followPalette();

    IconLabel* const picture_;
    QLabel* const title_;
    QLabel* const text_;
    QPushButton* const button_;
};

}  // namespace tesserine::app
