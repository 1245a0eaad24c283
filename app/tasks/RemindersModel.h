#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"

#include <QAbstractListModel>
#include <QString>

#include <cstddef>
#include <vector>

namespace tesserine::app {

class AppEnvironment;

/// A reminder of a note or a task, or the heading of a group of them.
struct ReminderRow {
    enum class Kind { heading, task, note };

    Kind kind = Kind::heading;
    QString title{};
    Instant at{};
    Uuid owner{};
    bool isPast = false;
    QString place{};  ///< its project or notebook

    friend bool operator==(const ReminderRow&, const ReminderRow&) = default;
};

/// The reminders of notes and tasks: those that have passed and were not removed, the newest first,
/// then those to come, by day. Completed tasks, trashed notes and templates have none.
class RemindersModel final : public QAbstractListModel {
    Q_OBJECT

public:
    /// Of tasks and of notes each.
    static constexpr std::size_t mostComing = 200;
    static constexpr std::size_t mostPast = 50;

    explicit RemindersModel(AppEnvironment& environment, QObject* parent = nullptr);

    void reload();
    const ReminderRow& row(int index) const { return rows_[static_cast<std::size_t>(index)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    enum class When { past, coming };
    std::vector<ReminderRow> read(When when) const;

    AppEnvironment& environment_;
    std::vector<ReminderRow> rows_;
};

}  // namespace tesserine::app
