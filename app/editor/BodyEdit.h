#pragma once

#include "app/editor/BlockPainter.h"
#include "app/editor/BodyLoader.h"
#include "app/editor/NoteDocument.h"
#include "app/editor/NoteObject.h"
#include "core/body/InlineStyle.h"

#include <QTextEdit>
#include <QTimer>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tesserine::app {

class ObjectRenderer;
class PictureHandle;
class Pictures;
struct UndoHistory;

/// Where a reader is in a note; at first at its beginning.
struct BodyPlace {
    int anchor = 0;       ///< where the selection began
    int position = 0;     ///< of the cursor
    bool isAtTop = true;  ///< not scrolled
    int top = 0;          ///< of the first line that is seen
    int topEdge = 0;      ///< of that line in the view, in pixels

    bool operator==(const BodyPlace&) const = default;
};

/// What a reader sees of a note.
struct BodyView {
    BodyPlace place{};
    std::optional<std::u16string> text{};  ///< that the place is in; none: what is to be shown
};

/// The body of a note, to be read and written: keys, clicks and what is drawn beside the text.
/// Knows no library; what needs one goes out as a signal.
class BodyEdit final : public QTextEdit {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BodyEdit)

public:
    /// `pictures` outlives it.
    explicit BodyEdit(Pictures& pictures, QWidget* parent = nullptr);
    ~BodyEdit() override;

    /// The whole note; what is not loaded yet is loaded at once.
    NoteDocument& note() const {
        loader_->finish();
        return note_;
    }

    /// Where the reader is, or will be when all is loaded.
    BodyPlace place() const;
    /// Linear in the size of the note.
    BodyView view() const;
    /// Shows a canonical body and, once it is all there, `view`, whose place moves along with the
    /// words that both texts have. A long one comes piece by piece; others can be undone through
    /// `history`, as `BodyLoader` says.
    void load(const std::string& html, BodyView view = {}, UndoHistory* history = nullptr);
    /// Makes the note say what a canonical body says, as one step to undo, and stays where the
    /// reader is. False where that leads elsewhere; the body is to be loaded then.
    bool changeTo(const std::string& html);
    bool isLoading() const { return loader_->isLoading(); }
    /// Whether the note was changed since it was loaded or written.
    bool isModified() const { return note_.isModified(); }

    /// Changes the style of the selection, or of what is typed next.
    void changeStyle(const std::function<void(InlineStyle& style)>& change);
    void toggleMark(HTMLElement element);
    /// Calls `change(note, cursor)` with the cursor of the view, which moves along.
    void edit(const std::function<void(NoteDocument& note, QTextCursor& cursor)>& change);

    /// Marks that are laid over the text and belong to nobody's note, such as what was found.
    enum class Overlay { spelling, sought, found, count };
    void setOverlay(Overlay overlay, QList<QTextEdit::ExtraSelection> marks);

    /// The font of words, in its usual size.
    void setTextFont(const QFont& font);
    /// In steps of a tenth around the usual size.
    void setZoomStep(int step);
    int zoomStep() const { return zoomStep_; }
    /// Whether "# " and the like make styles.
    void setTypingShortcuts(bool areOn) { hasShortcuts_ = areOn; }

    /// The object that the cursor selects or stands beside, as its position.
    std::optional<int> objectAtCursor() const;
    /// What the object at a position stands for.
    const NoteObject& objectAt(int position) const;
    /// Makes the picture at the cursor, if there is one, so many times as wide.
    void scalePicture(double factor);
    /// The colours changed.
    void followTheme();

signals:
    void linkActivated(const QString& address);
    /// A file, picture or table was double-clicked, at `cell`, or a locked passage clicked.
    void objectActivated(int position, tesserine::app::CellPlace cell = {});
    /// Something is to be inserted at the cursor; valid during the call.
    void pasted(const QMimeData* data);
    void left();  ///< the focus went elsewhere
    /// What stands beside the body keeps to its column: the empty room at both sides, in pixels.
    void columnChanged(int side);
    /// Before the usual entries are shown; connect to add others.
    void menuWanted(QMenu* menu, int position);

private:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;
    QMimeData* createMimeDataFromSelection() const override;

    bool pressMargin(const QMouseEvent& event);
    bool handleKey(const QKeyEvent& event);
    bool pressEnter();
    bool pressTab(int levels);
    void typeKey(QKeyEvent& event);
    void beginAnew(NoteDocument::Paragraph paragraph);
    void beforeTyping(const QString& text);
    void keepEnding();
    void leaveObject();
    void afterTyping(const QString& text);
    void repairObjects();
    QPointF documentPoint(const QPoint& point) const;
    std::optional<int> objectUnder(const QPoint& point) const;
    void showPointer(const QPoint& point);

    void showView();
    void showHint();
    void wrap();
    void scrollTo(const QTextCursor& line, int edge);
    void layOutAnew(const std::function<void()>& change);
    void layOutRest();

    NoteDocument& note_;  // its child
    BodyLoader* const loader_;
    BodyView wanted_;  // when all is loaded
    BlockPainter painter_;
    ObjectRenderer* const renderer_;
    std::unique_ptr<PictureHandle> handle_;
    std::array<QList<QTextEdit::ExtraSelection>, static_cast<std::size_t>(Overlay::count)>
        overlays_;
    QFont font_;
    int zoomStep_ = 0;
    int columnWidth_ = 0;  // beside the bar that scrolls, whether or not that is shown
    bool hasShortcuts_ = true;
    QTimer wrapTimer_;
    QTimer restTimer_;
};

}  // namespace tesserine::app
