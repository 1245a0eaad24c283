#include "app/lists/Sidebar.h"

#include "app/lists/NoteActions.h"
#include "app/lists/NoteListModel.h"
#include "app/lists/Pickers.h"
#include "app/lists/SidebarDelegate.h"
#include "app/lists/SidebarModel.h"
#include "app/look/DragPicture.h"
#include "app/look/Icon.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>

#include <algorithm>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;
constexpr const char* notebookMimeType = "application/x-tesserine-notebook";
constexpr const char* tagMimeType = "application/x-tesserine-tag";

/// The address of a line; a heading is named by its title.
std::string foldingName(const QModelIndex& index) {
    const QString address = index.data(SidebarModel::addressRole).toString();
    return (address.isEmpty() ? index.data().toString() : address).toStdString();
}

struct Deletion {
    Kind kind;
    const char* question;
    const char* verb;
};
constexpr Deletion deletions[] = {
    {Kind::notebook,
     "Delete the notebook “%1”? Its notes stay, in no notebook.",
     "Delete Notebook"},
    {Kind::tag, "Delete the tag “%1”? Notes and tasks only lose the tag.", "Delete Tag"},
    {Kind::label, "Delete the label “%1”? Notes and tasks only lose the tag.", "Delete Label"},
    {Kind::savedSearch, "Delete the saved search “%1”? No note is deleted.", "Delete Search"},
    {Kind::project, "Delete the project “%1”? Its tasks move to the Inbox.", "Delete Project"},
};

const Deletion* deletionOf(Kind kind) {
    const auto* const found = std::ranges::find(deletions, kind, &Deletion::kind);
    return found == std::end(deletions) ? nullptr : found;
}

}  // namespace

Sidebar::Sidebar(AppEnvironment& environment, QWidget* parent)
    : QTreeView(parent), environment_(environment), model_(new SidebarModel(environment, this)) {
    setObjectName("sidebar");
    setAccessibleName("Places");
    setFrameShape(QFrame::NoFrame);
    setHeaderHidden(true);
    setIndentation(0);
    setRootIsDecorated(false);
    setExpandsOnDoubleClick(false);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMouseTracking(true);
    setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    viewport()->setBackgroundRole(QPalette::Window);
    setItemDelegate(new SidebarDelegate(this));
    const auto folded =
        environment.preferences().strings(foldedKey).value_or(std::vector<std::string>{});
    folded_.insert(folded.begin(), folded.end());

    setModel(model_);
    connect(model_, &SidebarModel::aboutToRebuild, this, &Sidebar::rememberTop);
    connect(model_, &SidebarModel::aboutToRebuild, this, &Sidebar::rememberName);
    connect(model_, &SidebarModel::rebuilt, this, &Sidebar::putFoldingBack);
    connect(model_, &SidebarModel::rebuilt, this, &Sidebar::putTopBack);
    connect(model_, &SidebarModel::rebuilt, this, &Sidebar::putNameBack);
    connect(model_, &SidebarModel::renamed, this, &Sidebar::rename, Qt::QueuedConnection);
    connect(this, &QTreeView::collapsed, this, &Sidebar::rememberFolding);
    connect(this, &QTreeView::expanded, this, &Sidebar::rememberFolding);
    putFoldingBack();
    acceptNotes();
    acceptPlaces();
}

void Sidebar::mark(const Place& place) {
    marked_ = place;
    isMarking_ = true;
    const QModelIndex index = model_->indexOf(place);
    if (index.isValid()) {
        setCurrentIndex(index);
        keepUnfolded(index);
    } else {
        setCurrentIndex({});
        clearSelection();
    }
    isMarking_ = false;
}

/// Does not unfold what the place stands in.
void Sidebar::markAgain() {
    if (!marked_) return;
    setAutoScroll(false);
    mark(Place(*marked_));
    setAutoScroll(true);
}

std::optional<Place> Sidebar::current() const { return SidebarModel::placeAt(currentIndex()); }

void Sidebar::currentChanged(const QModelIndex& now, const QModelIndex& before) {
    QTreeView::currentChanged(now, before);
    const auto place = SidebarModel::placeAt(now);
    if (isMarking_ || !place || place == marked_) return;
    marked_ = place;
    emit placeChosen(*place);
}

/// The other buttons ask for something about a place without going there.
void Sidebar::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) QTreeView::mousePressEvent(event);
}

void Sidebar::mouseReleaseEvent(QMouseEvent* event) {
    QTreeView::mouseReleaseEvent(event);
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() == Qt::MiddleButton) {
        if (const auto place = SidebarModel::placeAt(index)) emit newTabWanted(*place);
        return;
    }
    if (event->button() != Qt::LeftButton || !model_->hasChildren(index)) return;
    const bool isHeading = !SidebarModel::placeAt(index);
    const int arrow = visualRect(index).right() - 2 * space::huge;
    if (isHeading || event->position().x() > arrow) setExpanded(index, !isExpanded(index));
    if (isHeading) markAgain();
}

// Making, renaming, deleting

void Sidebar::createNotebook() { createNotebookIn({}); }

void Sidebar::createNotebookIn(const std::optional<Uuid>& parent) {
    StoreContext& context = environment_.context();
    CDNotebook* above = parent ? context.find<CDNotebook>(*parent) : nullptr;
    std::string name = "Untitled Notebook";
    for (int i = 2; environment_.notebooks().find(context, name, above) != nullptr; ++i) {
        name = "Untitled Notebook " + std::to_string(i);
    }
    const Uuid id = *environment_.notebooks().findOrCreate(context, name, above).id;
    if (environment_.save(this)) editNew({Kind::notebook, id});
}

void Sidebar::createTag() {
    StoreContext& context = environment_.context();
    std::string name = "untitled";
    for (int i = 2; environment_.tags().find(context, name) != nullptr; ++i) {
        name = "untitled " + std::to_string(i);
    }
    const Uuid id = *environment_.tags().findOrCreate(context, name)->id;
    if (environment_.save(this)) editNew({Kind::tag, id});
}

void Sidebar::createProject() {
    StoreContext& context = environment_.context();
    std::string name = "Untitled Project";
    for (int i = 2; environment_.projects().find(context, name) != nullptr; ++i) {
        name = "Untitled Project " + std::to_string(i);
    }
    const Uuid id = *environment_.projects().create(context, name).id;
    if (environment_.save(this)) editNew({Kind::project, id});
}

void Sidebar::editNew(const Place& place) {
    const QModelIndex index = model_->indexOf(place);
    for (QModelIndex above = index.parent(); above.isValid(); above = above.parent()) {
        expand(above);
    }
    setCurrentIndex(index);
    edit(index);
}

void Sidebar::renameCurrent() {
    const QModelIndex index = currentIndex();
    if (!(index.flags() & Qt::ItemIsEditable)) return;
    scrollTo(index);  // unfolds what it stands in
    edit(index);
}

/// Others may change the library while a name is being typed.
void Sidebar::rememberName() {
    typed_.reset();
    for (const auto* field : viewport()->findChildren<QLineEdit*>()) {
        const auto place = SidebarModel::placeAt(indexAt(field->geometry().center()));
        if (!field->isVisible() || !place) continue;
        const int selected = field->hasSelectedText() ? field->selectionLength() : 0;
        const int from = selected > 0 ? field->selectionStart() : field->cursorPosition();
        typed_ = {*place, field->text(), from, selected};
    }
}

void Sidebar::putNameBack() {
    if (!typed_) return;
    const QModelIndex index = model_->indexOf(typed_->place);
    if (!index.isValid()) return;
    edit(index);
    if (auto* field = qobject_cast<QLineEdit*>(indexWidget(index))) {
        field->setText(typed_->name);
        field->setSelection(typed_->from, typed_->selected);
    }
}

/// A tag that takes the name of another one becomes that one, which is shown in its place.
void Sidebar::rename(const Place& place, const QString& name) {
    StoreContext& context = environment_.context();
    const bool isShown = place == marked_;
    Place renamed = place;
    const std::string text = name.toStdString();
    try {
        if (auto* notebook = context.find<CDNotebook>(place.id)) {
            environment_.notebooks().rename(context, *notebook, text);
        } else if (auto* tag = context.find<CDTag>(place.id)) {
            renamed.id = *environment_.tags().rename(context, *tag, text).id;
        } else if (auto* search = context.find<CDSavedSearch>(place.id)) {
            environment_.savedSearches().rename(*search, text);
        } else if (auto* project = context.find<CDProject>(place.id)) {
            environment_.projects().rename(context, *project, text);
        }
    } catch (const UserError& error) {
        context.rollback();
        return showNotice(this, error.what());
    }
    if (!environment_.save(this) || renamed == place || !isShown) return;
    if (const QModelIndex index = model_->indexOf(renamed); index.isValid()) setCurrentIndex(index);
}

void Sidebar::deleteCurrent() {
    if (const auto place = current()) askToDelete(*place);
}

void Sidebar::askToDelete(const Place& place) {
    const Deletion* deletion = deletionOf(place.kind);
    if (deletion == nullptr) return;
    const QModelIndex index = model_->indexOf(place);
    QString question = QString(deletion->question).arg(index.data().toString());
    if (model_->hasChildren(index)) question += " What stands inside it moves to the top.";
    auto* box =
        new QMessageBox(QMessageBox::Question, deletion->verb, question, QMessageBox::Cancel, this);
    box->setObjectName("question");
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(QMessageBox::Cancel);
    QPushButton* button = box->addButton(deletion->verb, QMessageBox::DestructiveRole);
    connect(button, &QPushButton::clicked, this, [this, place] { remove(place); });
    box->open();
}

void Sidebar::remove(const Place& place) {
    StoreContext& context = environment_.context();
    if (auto* notebook = context.find<CDNotebook>(place.id)) {
        environment_.notebooks().remove(context, *notebook);
    } else if (auto* tag = context.find<CDTag>(place.id)) {
        environment_.tags().remove(context, *tag);
    } else if (auto* search = context.find<CDSavedSearch>(place.id)) {
        environment_.savedSearches().remove(context, *search);
    } else if (auto* project = context.find<CDProject>(place.id)) {
        environment_.projects().remove(context, *project);
    }
    environment_.save(this);
    if (place == marked_) setCurrentIndex(model_->indexOf({Kind::allNotes}));
}

void Sidebar::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    const auto place = SidebarModel::placeAt(index);
    auto* menu = new QMenu(this);
    menu->setObjectName("sidebarMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (place) {
        menu->addAction("Open in New Tab", this, [this, place] { emit newTabWanted(*place); });
        menu->addSeparator();
    }
    menu->addAction(icon("notebook"), "New Notebook", this, &Sidebar::createNotebook);
    if (place && place->kind == Kind::notebook) {
        menu->addAction(
            "New Notebook Inside", this, [this, id = place->id] { createNotebookIn(id); });
    }
    menu->addAction(icon("tag"), "New Tag", this, &Sidebar::createTag);
    menu->addAction(icon("project"), "New Project", this, &Sidebar::createProject);
    if (place && deletionOf(place->kind) != nullptr) {
        menu->addSeparator();
        menu->addAction(
            icon("pencil"), "Rename", this, [this, place] { edit(model_->indexOf(*place)); });
        if (place->kind == Kind::notebook || place->kind == Kind::tag) {
            menu->addAction("Move…", this, [this, place] {
                pickParent(environment_, window(), *place, [this, place](const auto& parent) {
                    moveBelow(*place, parent);
                });
            });
        }
        menu->addAction(
            icon("trash", Ink::danger),
            QString(deletionOf(place->kind)->verb) + "…",
            this,
            [this, place] { askToDelete(*place); });
    }
    frame(place);
    connect(menu, &QMenu::aboutToHide, this, [this] { frame({}); });
    menu->popup(event->globalPos());
}

// Folding

void Sidebar::rememberFolding() {
    if (isMarking_) return;
    folded_.clear();
    std::vector<QModelIndex> open{QModelIndex()};
    while (!open.empty()) {
        const QModelIndex parent = open.back();
        open.pop_back();
        for (int row = 0; row < model_->rowCount(parent); ++row) {
            const QModelIndex index = model_->index(row, 0, parent);
            if (!model_->hasChildren(index)) continue;
            open.push_back(index);
            if (!isExpanded(index)) folded_.insert(foldingName(index));
        }
    }
    try {
        environment_.preferences().set(
            foldedKey, std::vector<std::string>(folded_.begin(), folded_.end()));
    } catch (const UserError& error) {
        environment_.log().warning(std::string("the folding of the sidebar: ") + error.what());
    }
}

/// What was unfolded to show a place stays so when the lines are made anew.
void Sidebar::keepUnfolded(const QModelIndex& index) {
    for (QModelIndex above = index.parent(); above.isValid(); above = above.parent()) {
        if (isExpanded(above)) folded_.erase(foldingName(above));
    }
}

void Sidebar::putFoldingBack() {
    isMarking_ = true;
    std::vector<QModelIndex> open{QModelIndex()};
    while (!open.empty()) {
        const QModelIndex parent = open.back();
        open.pop_back();
        for (int row = 0; row < model_->rowCount(parent); ++row) {
            const QModelIndex index = model_->index(row, 0, parent);
            setExpanded(index, !folded_.contains(foldingName(index)));
            open.push_back(index);
        }
    }
    isMarking_ = false;
    markAgain();
}

void Sidebar::rememberTop() {
    top_.reset();
    for (QModelIndex index = indexAt({0, 0}); index.isValid(); index = indexBelow(index)) {
        const auto place = SidebarModel::placeAt(index);
        if (!place) continue;
        top_ = {*place, visualRect(index).top()};
        return;
    }
}

void Sidebar::putTopBack() {
    const QModelIndex index = top_ ? model_->indexOf(top_->place) : QModelIndex();
    if (!index.isValid()) return;
    doItemsLayout();
    QScrollBar& bar = *verticalScrollBar();
    bar.setValue(bar.value() + visualRect(index).top() - top_->y);
}

// Dropping

void Sidebar::takeDrops(
    const QString& mimeType,
    const std::set<Kind>& kinds,
    std::function<void(const Place& place, const QMimeData& dragged)> dropped) {
    drops_.push_back({mimeType, kinds, std::move(dropped)});
}

void Sidebar::acceptNotes() {
    takeDrops(
        notesMimeType,
        {Kind::notebook, Kind::tag, Kind::pinned, Kind::trash, Kind::allNotes},
        [this](const Place& place, const QMimeData& dragged) {
            const NoteActions actions(environment_, this);
            const auto notes = draggedNotes(dragged);
            if (place.kind != Kind::trash) actions.restore(notes);  // what is dragged out of it
            switch (place.kind) {
            case Kind::notebook: return actions.move(notes, place.id);
            case Kind::tag: return actions.addTag(notes, place.id);
            case Kind::pinned: return actions.setPinned(notes, true);
            case Kind::trash: return actions.moveToTrash(notes);
            default: return;
            }
        });
}

/// Notebooks go into notebooks, tags below tags.
void Sidebar::acceptPlaces() {
    const auto moveInto = [this](const char* mimeType) {
        return [this, mimeType](const Place& place, const QMimeData& dragged) {
            const auto moved = Place::fromAddress(dragged.data(mimeType).toStdString());
            if (moved) moveBelow(*moved, place.id);
        };
    };
    takeDrops(notebookMimeType, {Kind::notebook}, moveInto(notebookMimeType));
    takeDrops(tagMimeType, {Kind::tag}, moveInto(tagMimeType));
}

void Sidebar::moveBelow(const Place& place, const std::optional<Uuid>& parent) {
    StoreContext& context = environment_.context();
    const auto move = [&](const auto& service, auto* moved, auto* above) {
        const bool isThere = moved != nullptr && (above != nullptr || !parent);
        if (isThere) service.move(*moved, above);
    };
    const Uuid above = parent.value_or(Uuid{});
    if (place.kind == Kind::notebook) {
        move(
            environment_.notebooks(),
            context.find<CDNotebook>(place.id),
            context.find<CDNotebook>(above));
    } else {
        move(environment_.tags(), context.find<CDTag>(place.id), context.find<CDTag>(above));
    }
    environment_.save(this);
}

void Sidebar::startDrag(Qt::DropActions) {
    const auto place = current();
    if (!place || (place->kind != Kind::notebook && place->kind != Kind::tag)) return;
    const QPixmap picture = dragPicture(currentIndex().data().toString(), *this);
    auto* drag = new QDrag(this);
    auto* dragged = new QMimeData;
    dragged->setData(
        place->kind == Kind::notebook ? notebookMimeType : tagMimeType,
        QByteArray::fromStdString(place->address()));
    drag->setMimeData(dragged);
    drag->setPixmap(picture);
    drag->setHotSpot({space::medium, picture.deviceIndependentSize().toSize().height() / 2});
    drag->exec(Qt::MoveAction);
}

const Sidebar::Drop* Sidebar::dropFor(const QMimeData& dragged, const Place& place) const {
    const auto found = std::ranges::find_if(drops_, [&](const Drop& drop) {
        return dragged.hasFormat(drop.mimeType) && drop.kinds.contains(place.kind);
    });
    return found == drops_.end() ? nullptr : &*found;
}

void Sidebar::frame(const std::optional<Place>& place) {
    if (place == framed_) return;
    framed_ = place;
    viewport()->update();
}

void Sidebar::drawRow(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyleOptionViewItem row = option;
    const bool isFramed = framed_ && SidebarModel::placeAt(index) == framed_;
    if (isFramed) row.state |= QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
    QTreeView::drawRow(painter, row, index);
}

void Sidebar::dragEnterEvent(QDragEnterEvent* event) {
    const bool isKnown = std::ranges::any_of(
        drops_, [&](const Drop& drop) { return event->mimeData()->hasFormat(drop.mimeType); });
    event->setAccepted(isKnown);
}

void Sidebar::dragMoveEvent(QDragMoveEvent* event) {
    QTreeView::dragMoveEvent(event);  // scrolls near the edges
    const auto place = SidebarModel::placeAt(indexAt(event->position().toPoint()));
    const bool isTaken = place && dropFor(*event->mimeData(), *place) != nullptr;
    event->setAccepted(isTaken);
    frame(isTaken ? place : std::nullopt);
}

void Sidebar::dragLeaveEvent(QDragLeaveEvent* event) {
    QTreeView::dragLeaveEvent(event);
    frame({});
}

/// On the place with the frame, wherever its line stands by now.
void Sidebar::dropEvent(QDropEvent* event) {
    const auto place = framed_;
    frame({});
    setState(QAbstractItemView::NoState);
    event->setAccepted(place.has_value());
    if (place) dropFor(*event->mimeData(), *place)->take(*place, *event->mimeData());
}

}  // namespace tesserine::app
