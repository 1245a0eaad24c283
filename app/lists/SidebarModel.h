#pragma once

#include "app/lists/PlaceCounts.h"
#include "app/state/Place.h"

#include <QStandardItemModel>

#include <optional>

namespace tesserine::app {

class AppEnvironment;

/// The tree of places: lists of notes, notebooks, tags, saved searches, lists of tasks, projects,
/// labels, the trash. Follows the library; how much is in each place is counted in the background.
class SidebarModel final : public QStandardItemModel {
    Q_OBJECT

public:
    enum Role {
        addressRole = Qt::UserRole + 1,  ///< of the place; empty for the heading of a group
        countRole,
        iconNameRole,
    };

    explicit SidebarModel(AppEnvironment& environment, QObject* parent = nullptr);

    /// None for a heading.
    static std::optional<Place> placeAt(const QModelIndex& index);
    /// Invalid when the place is not listed.
    QModelIndex indexOf(const Place& place) const;

    /// Renames what the place stands for.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

signals:
    void aboutToRebuild();
    void rebuilt();
    /// A name was typed into the line of a place.
    void renamed(const tesserine::app::Place& place, const QString& name);

private:
    void rebuild();
    void addNotes();
    void addTasks();
    template <class Row>
    void addTree(QStandardItem& group, Place::Kind kind, const std::vector<Row>& rows);
    void addLabels(QStandardItem& group);
    QStandardItem& addGroup(const QString& title);
    QStandardItem& add(QStandardItem& parent, const Place& place, const QString& name);
    void count();
    void takeCounts(const PlaceCounts& counts);

    AppEnvironment& environment_;
    PlaceCounts counts_;
    bool isCounting_ = false;
    bool isStale_ = false;  // something changed while counting
};

}  // namespace tesserine::app
