#pragma once

#include "app/state/Place.h"

#include <QTreeView>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace tesserine::app {

class AppEnvironment;
class SidebarModel;

/// The left pane: every place of the library, and where notes and tasks are dropped.
///
/// Notebooks, tags, searches and projects are made, renamed and deleted in place.
class Sidebar final : public QTreeView {
    Q_OBJECT

public:
    /// Addresses of the lines that the user folded up.
    static constexpr std::string_view foldedKey = "tesserine.sidebar.folded";

    explicit Sidebar(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Marks the place without sending `placeChosen`.
    void mark(const Place& place);
    SidebarModel& places() { return *model_; }

    /// Lets things of another room be dropped on places of these kinds; `dropped` does it.
    void takeDrops(
        const QString& mimeType,
        const std::set<Place::Kind>& kinds,
        std::function<void(const Place& place, const QMimeData& dragged)> dropped);

public slots:
    /// These make one and open the field for its name.
    void createNotebook();
    void createTag();
    void createProject();
    void renameCurrent();
    void deleteCurrent();

signals:
    void placeChosen(const tesserine::app::Place& place);
    void newTabWanted(const tesserine::app::Place& place);

private:
    struct Drop {
        QString mimeType;
        std::set<Place::Kind> kinds;
        std::function<void(const Place& place, const QMimeData& dragged)> take;
    };

    void currentChanged(const QModelIndex& now, const QModelIndex& before) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

    void markAgain();
    std::optional<Place> current() const;
    void createNotebookIn(const std::optional<Uuid>& parent);
    void editNew(const Place& place);
    void rename(const Place& place, const QString& name);
    void askToDelete(const Place& place);
    void remove(const Place& place);
    void rememberFolding();
    void keepUnfolded(const QModelIndex& index);
    void putFoldingBack();
    void rememberTop();
    void putTopBack();
    void rememberName();
    void putNameBack();
    void acceptNotes();
    void acceptPlaces();
    /// A notebook or a tag; none: to the top.
    void moveBelow(const Place& place, const std::optional<Uuid>& parent);
    const Drop* dropFor(const QMimeData& dragged, const Place& place) const;
    /// Shows where what is dragged would go, or what a menu is about.
    void frame(const std::optional<Place>& place);

    AppEnvironment& environment_;
    SidebarModel* model_;
    std::vector<Drop> drops_;
    std::set<std::string> folded_;
    /// The first place that is seen, and where; nothing moves while the lines are made anew.
    struct Top {
        Place place;
        int y = 0;
    };
    std::optional<Top> top_;
    /// The name that is being typed while the lines are made anew.
    struct Typed {
        Place place;
        QString name;
        int from = 0;  // what is selected begins here, or the next letter
        int selected = 0;
    };
    std::optional<Typed> typed_;
    std::optional<Place> marked_;
    std::optional<Place> framed_;
    bool isMarking_ = false;
};

}  // namespace tesserine::app
