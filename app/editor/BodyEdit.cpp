#include "app/editor/BodyEdit.h"

#include "app/editor/Comparison.h"
#include "app/editor/EditorPreferences.h"
#include "app/editor/ListDrag.h"
#include "app/editor/ListRules.h"
#include "app/editor/ObjectRenderer.h"
#include "app/editor/ParagraphChange.h"
#include "app/editor/PasteRules.h"
#include "app/editor/PictureHandle.h"
#include "app/editor/Pictures.h"
#include "app/editor/StyleCommands.h"
#include "app/look/Theme.h"
#include "core/body/AttributedTextReader.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/PlainText.h"

#include <QAbstractTextDocumentLayout>
#include <QAction>
#include <QDragLeaveEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <memory>
#include <utility>

namespace tesserine::app {
namespace {

using Kind = BlockStyle::Kind;

/// Lines are not longer than one can read; what is left stands empty at both sides.
constexpr int widestColumn = 760;

/// Laying out all of a note of more characters takes longer than a frame.
constexpr int manyCharacters = 50'000;
constexpr int wrapDelay = 150;  // milliseconds without another width
constexpr int restDelay = 500;  // milliseconds without a change; laying out takes less

constexpr const char* hint = "Start writing, or type [[ to link another note";

/// Whether the event may change the note or look beyond what is seen of it.
bool needsWholeNote(QEvent::Type type) {
    switch (type) {
    case QEvent::KeyPress:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::DragEnter:
    case QEvent::ContextMenu: return true;
    default: return false;
    }
}

bool isLaidOut(const QTextDocument& document) {
    return document.lastBlock().layout()->lineCount() > 0;
}

/// Where places of a text are in the note that may say something else by now.
class PlaceNow {
public:
    PlaceNow(const std::optional<std::u16string>& text, const NoteDocument& note)
        : text_(text), last_(note.characterCount() - 1) {
        if (text) changes_ = compared(*text, note.content().text);
    }

    int of(int place) const {
        if (!text_) return std::min(place, last_);
        const auto before = static_cast<std::size_t>(place);
        const bool beginsLine = before > 0 && (*text_)[before - 1] == u'\n';
        const std::size_t after = changes_.placeAfter(
            before, beginsLine ? Comparison::Side::next : Comparison::Side::previous);
        return std::min(static_cast<int>(after), last_);
    }

private:
    const std::optional<std::u16string>& text_;
    const int last_;
    Comparison changes_;
};

}  // namespace

BodyEdit::BodyEdit(Pictures& pictures, QWidget* parent)
    : QTextEdit(parent),
      note_(*new NoteDocument(this)),
      loader_(new BodyLoader(note_, this)),
      painter_(note_),
      renderer_(new ObjectRenderer(note_, pictures, this)),
      handle_(std::make_unique<PictureHandle>(note_, *renderer_)) {
    setObjectName("noteBody");
    setAccessibleName("Note body");
    setFrameShape(QFrame::NoFrame);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setAcceptRichText(true);
    viewport()->setMouseTracking(true);
    setDocument(&note_);
    setLineWrapMode(FixedPixelWidth);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    wrapTimer_.setSingleShot(true);
    connect(&wrapTimer_, &QTimer::timeout, this, &BodyEdit::wrap);
    restTimer_.setSingleShot(true);
    connect(&restTimer_, &QTimer::timeout, this, &BodyEdit::layOutRest);
    connect(&note_, &QTextDocument::contentsChange, this, [this] {
        if (!isLaidOut(note_)) restTimer_.start(restDelay);
        showHint();
    });
    connect(&note_, &NoteDocument::aboutToBeReplaced, this, [this] {
        overlays_ = {};
        setExtraSelections({});
        handle_->drop();
    });
    connect(loader_, &BodyLoader::begun, this, [this] {
        setTextCursor(QTextCursor(&note_));
        verticalScrollBar()->setValue(0);
    });
    connect(loader_, &BodyLoader::finished, this, [this] {
        showView();
        emit cursorPositionChanged();  // it stands in other words
    });
    connect(&pictures, &Pictures::loaded, this, [this] {
        layOutAnew([this] { note_.markContentsDirty(0, note_.characterCount()); });
    });
    setTextFont(Theme::font(TextRole::body));
}

BodyEdit::~BodyEdit() {
    note_.disconnect(this);  // its colours are taken off when it goes, after the timers
}

void BodyEdit::toggleMark(HTMLElement element) {
    const QTextCursor cursor = textCursor();
    const bool isSet = cursor.hasSelection() ? editing::hasMark(note(), cursor, element)
                                             : note().style(currentCharFormat()).has(element);
    changeStyle([&](InlineStyle& style) { editing::setMark(style, element, !isSet); });
}

void BodyEdit::changeStyle(const std::function<void(InlineStyle&)>& change) {
    if (isReadOnly()) return;
    const QTextCursor cursor = textCursor();
    if (cursor.hasSelection()) return note().changeStyles(cursor, change);
    InlineStyle style{.marks = note().style(currentCharFormat()).marks};
    change(style);
    setCurrentCharFormat(note_.charFormat(style, note_.paragraph(cursor.block())));
}

void BodyEdit::edit(const std::function<void(NoteDocument& note, QTextCursor& cursor)>& change) {
    if (isReadOnly()) return;
    QTextCursor cursor = textCursor();
    change(note(), cursor);
    setTextCursor(cursor);
    ensureCursorVisible();
}

void BodyEdit::setOverlay(Overlay overlay, QList<QTextEdit::ExtraSelection> marks) {
    overlays_[static_cast<std::size_t>(overlay)] = std::move(marks);
    QList<QTextEdit::ExtraSelection> all;
    for (const auto& some : overlays_) {
        all += some;
    }
    setExtraSelections(all);
}

void BodyEdit::setTextFont(const QFont& font) {
    font_ = font;
    setZoomStep(zoomStep_);
}

void BodyEdit::setZoomStep(int step) {
    zoomStep_ = std::clamp(step, EditorPreferences::smallestZoom, EditorPreferences::largestZoom);
    QFont font = font_;
    font.setPointSizeF(font.pointSizeF() * 1.1 * (1 + 0.1 * zoomStep_));
    layOutAnew([&] { note_.setDefaultFont(font); });
    renderer_->forget();
}

std::optional<int> BodyEdit::objectAtCursor() const {
    const QTextCursor cursor = textCursor();
    for (const int position : {cursor.selectionStart(), cursor.position() - 1}) {
        if (position >= 0 && !note_.styleAt(position).object.empty()) return position;
    }
    return {};
}

const NoteObject& BodyEdit::objectAt(int position) const {
    QTextCursor cursor(&note_);
    cursor.setPosition(position + 1);
    return renderer_->object(cursor.charFormat());
}

void BodyEdit::scalePicture(double factor) {
    const auto position = objectAtCursor();
    if (!position || isReadOnly()) return;
    const NoteObject& picture = objectAt(*position);
    if (picture.kind != NoteObject::Kind::picture) return;
    const double width = picture.width > 0 ? picture.width : renderer_->placeOf(*position).width();
    if (width > 0) handle_->setWidth(*position, width * factor);
}

BodyPlace BodyEdit::place() const {
    if (isLoading()) return wanted_.place;
    const QTextCursor cursor = textCursor();
    const QTextCursor top = cursorForPosition(QPoint(0, 0));
    return {
        .anchor = cursor.anchor(),
        .position = cursor.position(),
        .isAtTop = verticalScrollBar()->value() == 0,
        .top = top.position(),
        .topEdge = cursorRect(top).top()};
}

BodyView BodyEdit::view() const {
    if (isLoading()) return wanted_;
    return {.place = place(), .text = note_.content().text};
}

void BodyEdit::load(const std::string& html, BodyView view, UndoHistory* history) {
    wanted_ = std::move(view);
    setPlaceholderText({});
    loader_->load(html, history);
}

bool BodyEdit::changeTo(const std::string& html) {
    NoteDocument& note = this->note();
    BodyView before = view();
    changeInto(note, attributedText(html));
    if (note.html() != html) return false;
    wanted_ = std::move(before);
    showView();
    return true;
}

void BodyEdit::showView() {
    showHint();
    const auto [place, text] = std::exchange(wanted_, {});
    if (place == BodyPlace{}) return;  // who began to scroll meanwhile stays there
    const PlaceNow now(text, note_);
    QTextCursor cursor(&note_);
    cursor.setPosition(now.of(place.anchor));
    cursor.setPosition(now.of(place.position), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
    if (place.isAtTop) return verticalScrollBar()->setValue(0);
    QTextCursor top(&note_);
    top.setPosition(now.of(place.top));
    scrollTo(top, place.topEdge);
}

/// Not over the sign of a list, nor where nothing can be typed.
void BodyEdit::showHint() {
    const bool isPlain = note_.kind(note_.firstBlock()) == Kind::paragraph;
    setPlaceholderText(isPlain && !isReadOnly() && !isLoading() ? hint : "");
}

void BodyEdit::followTheme() {
    renderer_->forget();
    layOutAnew([this] { note_.followTheme(); });
}

/// Keys of our own commands go before those that a text field has by itself, such as Ctrl+K.
bool BodyEdit::event(QEvent* event) {
    if (event->type() == QEvent::ReadOnlyChange) showHint();
    if (needsWholeNote(event->type())) loader_->finish();
    if (event->type() == QEvent::MouseButtonPress) {
        return pressMargin(*static_cast<QMouseEvent*>(event));
    }
    if (event->type() == QEvent::ShortcutOverride) {
        const QKeySequence keys(static_cast<QKeyEvent*>(event)->keyCombination());
        for (const QAction* action : actions()) {
            if (!action->isEnabled() || !action->shortcuts().contains(keys)) continue;
            event->ignore();
            return true;
        }
    }
    return QTextEdit::event(event);
}

/// A click beside the column goes to the line that it is beside.
bool BodyEdit::pressMargin(const QMouseEvent& event) {
    const QRect column = viewport()->geometry();
    const QPoint point = event.position().toPoint();
    const bool isBeside = point.x() < column.left() || point.x() > column.right();
    if (event.button() != Qt::LeftButton || !isBeside) return false;
    const int x = std::clamp(point.x(), column.left(), column.right());
    setTextCursor(cursorForPosition(QPoint(x, point.y()) - column.topLeft()));
    setFocus();
    return true;
}

bool BodyEdit::viewportEvent(QEvent* event) {
    if (needsWholeNote(event->type())) loader_->finish();
    return QTextEdit::viewportEvent(event);
}

void BodyEdit::mousePressEvent(QMouseEvent* event) {
    const QPointF point = documentPoint(event->pos());
    const bool isLeft = event->button() == Qt::LeftButton;
    if (isLeft && !isReadOnly()) {
        if (const auto item = painter_.itemAt(point)) {
            return editing::toggleChecked(note_, note_.findBlock(*item));
        }
        if (handle_->press(point)) return;
    }
    const QString address = anchorAt(event->pos());
    const bool opens = (event->modifiers() & Qt::ControlModifier) || isReadOnly();
    if (isLeft && opens && !address.isEmpty()) {
        emit linkActivated(address);
        return;
    }
    QTextEdit::mousePressEvent(event);
}

void BodyEdit::mouseMoveEvent(QMouseEvent* event) {
    if (handle_->isDragged()) {
        handle_->move(documentPoint(event->pos()));
        return viewport()->update();
    }
    QTextEdit::mouseMoveEvent(event);
    showPointer(event->pos());
}

void BodyEdit::mouseReleaseEvent(QMouseEvent* event) {
    if (handle_->isDragged()) {
        handle_->release();
        return viewport()->update();
    }
    QTextEdit::mouseReleaseEvent(event);
    const auto object = objectUnder(event->pos());
    const bool isLocked = object && objectAt(*object).kind == NoteObject::Kind::locked;
    if (event->button() == Qt::LeftButton && isLocked) emit objectActivated(*object);
}

void BodyEdit::mouseDoubleClickEvent(QMouseEvent* event) {
    const auto object = objectUnder(event->pos());
    if (!object) return QTextEdit::mouseDoubleClickEvent(event);
    if (objectAt(*object).kind == NoteObject::Kind::locked) return;
    emit objectActivated(*object, renderer_->cellAt(*object, documentPoint(event->pos())));
}

void BodyEdit::contextMenuEvent(QContextMenuEvent* event) {
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QPoint point = isByKey ? cursorRect().center() : event->pos();
    const std::unique_ptr<QMenu> menu(createStandardContextMenu(point));
    const int position =
        isByKey ? textCursor().position() : cursorForPosition(event->pos()).position();
    emit menuWanted(menu.get(), position);
    menu->exec(viewport()->mapToGlobal(point));
}

/// Files stay where they are, also where they would be moved.
void BodyEdit::dropEvent(QDropEvent* event) {
    QTextEdit::dropEvent(event);
    if (isFileDrag(*event->mimeData())) event->setDropAction(Qt::CopyAction);
}

void BodyEdit::focusOutEvent(QFocusEvent* event) {
    QTextEdit::focusOutEvent(event);
    emit left();
}

/// After words were dragged out at the edge the text field believes that it is still to scroll: it
/// would drag them again, with no button pressed, until the next click lets them go somewhere. Its
/// timer is none that `killTimer` knows; it ends when what is dragged leaves.
void BodyEdit::timerEvent(QTimerEvent* event) {
    if (QGuiApplication::mouseButtons() & Qt::LeftButton) return QTextEdit::timerEvent(event);
    QDragLeaveEvent left;
    QTextEdit::dragLeaveEvent(&left);
}

void BodyEdit::paintEvent(QPaintEvent* event) {
    const QPointF offset = -documentPoint(QPoint(0, 0));
    const QRectF visible = QRectF(event->rect()).translated(-offset);
    renderer_->beginDrawing(visible);
    {
        QPainter painter(viewport());
        painter.setClipRect(event->rect());
        painter.translate(offset);
        painter_.paintBehind(painter, visible);
    }
    QTextEdit::paintEvent(event);
    QPainter painter(viewport());
    painter.setClipRect(event->rect());
    painter.translate(offset);
    painter_.paintMarkers(painter, visible);
    handle_->paint(painter);
}

void BodyEdit::resizeEvent(QResizeEvent* event) {
    const int room = width() - verticalScrollBar()->sizeHint().width();
    const int side = std::max(space::huge, (room - widestColumn) / 2);
    columnWidth_ = room - 2 * side;
    setViewportMargins(side, space::small, side, space::small);
    emit columnChanged(side);
    QTextEdit::resizeEvent(event);
    // A long note keeps its lines while the window is being resized.
    if (note_.characterCount() > manyCharacters) {
        wrapTimer_.start(wrapDelay);
    } else {
        wrap();
    }
}

void BodyEdit::wrap() {
    wrapTimer_.stop();
    if (columnWidth_ == lineWrapColumnOrWidth()) return;
    layOutAnew([this] { setLineWrapColumnOrWidth(columnWidth_); });
}

/// Makes a change after which the lines are others, and has the reader keep the place.
void BodyEdit::layOutAnew(const std::function<void()>& change) {
    const bool isAtTop = verticalScrollBar()->value() == 0;
    const QTextCursor top = cursorForPosition(QPoint(0, 0));
    const int before = isAtTop ? 0 : cursorRect(top).top();
    change();
    if (!isAtTop) scrollTo(top, before);
}

/// Has the line of the cursor stand at this height of the view, in pixels.
void BodyEdit::scrollTo(const QTextCursor& line, int edge) {
    QScrollBar& bar = *verticalScrollBar();
    const int value = std::max(bar.value() + cursorRect(line).top() - edge, 0);
    // Asking what stands below lays it out; the bar is told of the new height only later.
    note_.documentLayout()->hitTest(QPointF(0, value + viewport()->height()), Qt::FuzzyHit);
    bar.setMaximum(std::max(bar.maximum(), value));
    bar.setValue(value);
}

/// The toolkit lays a long note out piece by piece, and ends that too early when the note is
/// changed meanwhile: then it begins again.
void BodyEdit::layOutRest() {
    if (isLoading() || isLaidOut(note_)) return;
    layOutAnew([this] { note_.setTextWidth(note_.textWidth()); });
}

bool BodyEdit::canInsertFromMimeData(const QMimeData* source) const {
    if (isListDrag(*source)) return false;
    return source->hasUrls() || source->hasImage() || source->hasHtml() || source->hasText();
}

void BodyEdit::insertFromMimeData(const QMimeData* source) { emit pasted(source); }

QMimeData* BodyEdit::createMimeDataFromSelection() const {
    auto copied = std::make_unique<QMimeData>();
    const std::string html = canonicalHTML(note_.content(textCursor()));
    copied->setHtml(QString::fromStdString(html));
    copied->setData(paste::bodyType, QByteArray::fromStdString(html));
    copied->setText(QString::fromStdString(PlainText::fromHTML(html)));
    return copied.release();
}

QPointF BodyEdit::documentPoint(const QPoint& point) const {
    return QPointF(
        point.x() + horizontalScrollBar()->value(), point.y() + verticalScrollBar()->value());
}

std::optional<int> BodyEdit::objectUnder(const QPoint& point) const {
    const QPointF place = documentPoint(point);
    for (const ObjectRenderer::Shown& shown : renderer_->shown()) {
        if (shown.place.contains(place)) return shown.position;
    }
    return {};
}

void BodyEdit::showPointer(const QPoint& point) {
    const QPointF place = documentPoint(point);
    const QString address = anchorAt(point);
    const auto object = objectUnder(point);
    const bool isLocked = object && objectAt(*object).kind == NoteObject::Kind::locked;
    Qt::CursorShape shape = Qt::IBeamCursor;
    if (!isReadOnly() && handle_->isUnder(place)) {
        shape = Qt::SizeFDiagCursor;
    } else if (isLocked || !address.isEmpty() || painter_.itemAt(place)) {
        shape = Qt::PointingHandCursor;
    }
    viewport()->setCursor(shape);
    viewport()->setToolTip(address.isEmpty() ? QString() : address + "\nCtrl+click opens it");
}

}  // namespace tesserine::app
