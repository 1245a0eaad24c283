#pragma once

#include "app/editor/NoteObject.h"

#include <QObject>
#include <QRectF>
#include <QString>
#include <QTextObjectInterface>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class QTextDocument;

namespace tesserine::app {

class NoteDocument;
class Pictures;

/// Draws what stands in a note and is not text: pictures, files, locked passages, and blocks that
/// cannot be edited, such as tables.
class ObjectRenderer final : public QObject, public QTextObjectInterface {
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)
    Q_DISABLE_COPY_MOVE(ObjectRenderer)

public:
    /// Draws in `document` from now on. Both outlive it.
    ObjectRenderer(NoteDocument& document, Pictures& pictures, QObject* parent);
    ~ObjectRenderer() override;

    QSizeF intrinsicSize(QTextDocument* document, int position, const QTextFormat& format) override;
    void drawObject(
        QPainter* painter,
        const QRectF& place,
        QTextDocument* document,
        int position,
        const QTextFormat& format) override;

    /// What the object with this format stands for.
    const NoteObject& object(const QTextFormat& format);
    /// An object that is seen, in coordinates of the document.
    struct Shown {
        int position = 0;
        QRectF place{};
        bool isPicture = false;
    };
    const std::vector<Shown>& shown() const { return shown_; }
    QRectF placeOf(int position) const;
    /// The cell of the table at a position that is seen at `point`, in coordinates of the document;
    /// the first one where there is none.
    CellPlace cellAt(int position, const QPointF& point);
    /// Before a part of the document is drawn, be it as small as the cursor that blinks.
    void beginDrawing(const QRectF& part);
    /// Makes everything anew that was drawn before: the colours changed.
    void forget();

private:
    void followChange(int position, int removed, int added);
    QSizeF pictureSize(const NoteObject& object);
    QTextDocument& drawn(const QTextFormat& format);
    void paintPicture(QPainter& painter, const QRectF& place, const NoteObject& object);
    void paintCard(
        QPainter& painter, const QRectF& place, const QString& icon, const QString& title);

    NoteDocument& document_;
    Pictures& pictures_;
    std::vector<Shown> shown_;
    std::unordered_map<std::string, NoteObject> objects_;
    std::unordered_map<std::string, std::unique_ptr<QTextDocument>> blocks_;
};

}  // namespace tesserine::app
