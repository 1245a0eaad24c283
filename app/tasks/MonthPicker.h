#pragma once

#include "base/Calendar.h"
#include "core/tasks/TaskCalendarLayout.h"

#include <QWidget>

#include <optional>
#include <vector>

class QLabel;

namespace tesserine::app {

/// A small month in which a day is picked by a click, or by arrows, Page Up, Page Down and Return.
class MonthPicker final : public QWidget {
    Q_OBJECT

public:
    MonthPicker(Calendar calendar, Instant now, QWidget* parent = nullptr);

    /// Shows its month with the day marked.
    void setDay(Instant day);
    Instant day() const { return day_; }

signals:
    void picked(tesserine::Instant day);

private:
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

    void move(int days, int months);
    QRect cellArea(std::size_t cell) const;
    std::optional<std::size_t> cellAt(const QPoint& place) const;

    Calendar calendar_;
    Instant now_;
    Instant day_;
    std::vector<CalendarDayCell> cells_;
    std::optional<std::size_t> hovered_;
    QLabel* const title_;
};

}  // namespace tesserine::app
