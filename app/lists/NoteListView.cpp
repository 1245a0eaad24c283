#include "app/lists/NoteListView.h"

#include "app/lists/NoteListModel.h"
#include "app/lists/NoteRowDelegate.h"
#include "app/look/DragPicture.h"
#include "app/look/Theme.h"

#include <QDrag>
#include <QItemSelection>
#include <QKeyEvent>

#include <algorithm>
#include <utility>

namespace tesserine::app {

NoteListView::NoteListView(AppEnvironment& environment, NoteListModel& model, QWidget* parent)
    : QListView(parent), model_(model) {
    setObjectName("noteList");
    setAccessibleName("Notes");
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setUniformItemSizes(true);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMouseTracking(true);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setItemDelegate(new NoteRowDelegate(environment, model, this));
    // Before the view's own answers, which clear the selection.
    connect(
        &model,
        &QAbstractItemModel::rowsAboutToBeRemoved,
        this,
        [this](const QModelIndex&, int row) { chooseNeighbour(row); });
    connect(
        &model, &QAbstractItemModel::modelAboutToBeReset, this, &NoteListView::rememberSelection);
    setModel(&model);
    connect(&model, &QAbstractItemModel::modelReset, this, &NoteListView::putSelectionBack);
    connect(this, &QAbstractItemView::doubleClicked, this, &NoteListView::opened);
}

std::vector<Uuid> NoteListView::selected() const {
    std::vector<Uuid> notes;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            notes.push_back(model_.noteAt(row));
    }
    return notes;
}

bool NoteListView::choose(const Uuid& note) {
    const int row = model_.rowOf(note);
    if (row < 0) return false;
    const QModelIndex index = model_.index(row);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    scrollTo(index);
    return true;
}

void NoteListView::selectionChanged(const QItemSelection& now, const QItemSelection& before) {
    QListView::selectionChanged(now, before);
    emit selectionTurned();
}

void NoteListView::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && event->modifiers() == Qt::NoModifier && currentIndex().isValid()) {
        emit opened();
        return;
    }
    QListView::keyPressEvent(event);
}

void NoteListView::startDrag(Qt::DropActions actions) {
    const QModelIndexList indexes = selectionModel()->selectedRows();
    if (indexes.isEmpty()) return;
    const QString title = shownTitle(model_.summary(indexes.front().row()));
    auto* const drag = new QDrag(this);
    drag->setMimeData(model_.mimeData(indexes));
    drag->setPixmap(
        dragPicture(indexes.size() == 1 ? title : QString("%1 notes").arg(indexes.size()), *this));
    drag->setHotSpot({-space::medium, -space::small});  // beside the pointer
    drag->exec(actions, Qt::MoveAction);
}

/// The line is about to go: when it is the selected one, its neighbour is selected in its place.
void NoteListView::chooseNeighbour(int row) {
    const auto notes = selected();
    if (notes.size() != 1 || model_.noteAt(row) != notes.front()) return;
    const int next = row + 1 < model_.rowCount() ? row + 1 : row - 1;
    if (next >= 0) choose(model_.noteAt(next));
}

void NoteListView::rememberSelection() {
    remembered_ = selected();
    const QModelIndex top = indexAt(viewport()->rect().topLeft() + QPoint(1, 1));
    rememberedTop_ = top.isValid() && top.row() > 0 ? model_.noteAt(top.row()) : Uuid{};
}

/// Row by row in one pass: all of very many notes may be selected.
QItemSelection NoteListView::rowsOf(std::vector<Uuid> notes) const {
    std::ranges::sort(notes);
    QItemSelection rows;
    for (int row = 0, first = -1; row <= model_.rowCount() && !notes.empty(); ++row) {
        const bool isOne =
            row < model_.rowCount() && std::ranges::binary_search(notes, model_.noteAt(row));
        if (isOne && first < 0) first = row;
        if (isOne || first < 0) continue;
        rows.append(QItemSelectionRange(model_.index(first), model_.index(row - 1)));
        first = -1;
    }
    return rows;
}

void NoteListView::putSelectionBack() {
    const QItemSelection selection = rowsOf(remembered_);
    if (!selection.isEmpty()) {
        selectionModel()->setCurrentIndex(
            selection.front().topLeft(), QItemSelectionModel::NoUpdate);
        selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    }
    const int top = rememberedTop_.isNil() ? -1 : model_.rowOf(rememberedTop_);
    if (top >= 0) scrollTo(model_.index(top), QAbstractItemView::PositionAtTop);
}

}  // namespace tesserine::app
