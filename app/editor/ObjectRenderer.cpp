#include "app/editor/ObjectRenderer.h"

#include "app/editor/NoteDocument.h"
#include "app/editor/Pictures.h"
#include "app/look/Icon.h"
#include "app/look/Theme.h"
#include "core/body/SelectiveEncryption.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QPixmapCache>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tesserine::app {
namespace {

using ObjectKind = NoteObject::Kind;

constexpr double cardHeight = 44;
constexpr double cardWidth = 340;

QSize pixelsOf(const QPainter& painter, const QRectF& place) {
    return painter.deviceTransform().mapRect(place).size().toSize();
}

/// The picture in a smaller size; none when it is not to become smaller, or is too large to be
/// kept. A painter alone leaves pixels out, and small letters in a picture cannot be read then.
QPixmap shrunk(const QImage& image, const QSize& size) {
    constexpr int largest = 1'500'000;  // pixels; a good half of what the cache holds
    const bool isSmaller = size.width() < image.width() && size.height() < image.height();
    if (size.isEmpty() || !isSmaller || size.width() > largest / size.height()) return {};
    const QString key =
        QString("picture %1 %2 %3").arg(image.cacheKey()).arg(size.width()).arg(size.height());
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) return pixmap;
    pixmap =
        QPixmap::fromImage(image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

/// A table or another block as it is, in the colours of the theme. Loads nothing from anywhere.
class DrawnBlock final : public QTextDocument {
public:
    DrawnBlock(const std::string& html, const QFont& font) {
        const Colors& colors = Theme::colors();
        setDefaultFont(font);
        setDocumentMargin(0);
        setUndoRedoEnabled(false);
        setDefaultStyleSheet(
            QString("table { border-collapse: collapse; border: 1px solid %1; }"
                    "td, th { border: 1px solid %1; padding: 6px; }"
                    "th { background-color: %2; font-weight: bold; }"
                    "a { color: %3; }")
                .arg(colors.line.name(), colors.code.name(), colors.accent.name()));
        setHtml(QString::fromStdString(html));
        widenEmptyCells();
    }

protected:
    QVariant loadResource(int /*type*/, const QUrl& /*name*/) override { return {}; }

private:
    /// A table without a word would be a grid of slits.
    void widenEmptyCells() {
        const QString room(8, QChar::Nbsp);
        for (const QTextFrame* const frame : rootFrame()->childFrames()) {
            const auto* const table = qobject_cast<const QTextTable*>(frame);
            const int count = table == nullptr ? 0 : table->rows() * table->columns();
            for (int i = 0; i < count; ++i) {
                const QTextTableCell cell =
                    table->cellAt(i / table->columns(), i % table->columns());
                if (cell.firstPosition() == cell.lastPosition()) {
                    cell.firstCursorPosition().insertText(room);
                }
            }
        }
    }
};

QString sourceName(const NoteObject& object) {
    if (!object.label.empty()) return QString::fromStdString(object.label);
    const QString host = QUrl(QString::fromStdString(object.source)).host();
    return host.isEmpty() ? QString("Picture") : "Picture at " + host;
}

}  // namespace

ObjectRenderer::ObjectRenderer(NoteDocument& document, Pictures& pictures, QObject* parent)
    : QObject(parent), document_(document), pictures_(pictures) {
    document.documentLayout()->registerHandler(DocumentFormats::objectType, this);
    connect(&document, &QTextDocument::contentsChange, this, &ObjectRenderer::followChange);
}

ObjectRenderer::~ObjectRenderer() = default;

const NoteObject& ObjectRenderer::object(const QTextFormat& format) {
    const std::string& html = document_.style(format.toCharFormat()).object;
    const auto [place, isNew] = objects_.try_emplace(html);
    if (isNew) place->second = NoteObject::of(html);
    return place->second;
}

QRectF ObjectRenderer::placeOf(int position) const {
    const auto found = std::ranges::find(shown_, position, &Shown::position);
    return found == shown_.end() ? QRectF() : found->place;
}

CellPlace ObjectRenderer::cellAt(int position, const QPointF& point) {
    QTextCursor object(&document_);
    object.setPosition(position + 1);
    if (this->object(object.charFormat()).kind != ObjectKind::block) return {};
    QTextDocument& block = drawn(object.charFormat());
    const QPointF inBlock = point - placeOf(position).topLeft();
    QTextCursor cursor(&block);
    cursor.setPosition(std::max(block.documentLayout()->hitTest(inBlock, Qt::FuzzyHit), 0));
    const QTextTable* const table = cursor.currentTable();
    if (table == nullptr) return {};
    const QTextTableCell cell = table->cellAt(cursor);
    return {.row = cell.row(), .column = cell.column()};
}

void ObjectRenderer::beginDrawing(const QRectF& part) {
    std::erase_if(shown_, [&](const Shown& shown) { return shown.place.intersects(part); });
}

/// What stands in other lines than those that were changed is not drawn again.
void ObjectRenderer::followChange(int position, int removed, int added) {
    if (removed == added) return;  // of formats
    const int end = position + removed;
    std::erase_if(shown_, [&](const Shown& shown) {
        return shown.position >= position && shown.position < end;
    });
    for (Shown& shown : shown_) {
        if (shown.position >= end) shown.position += added - removed;
    }
}

void ObjectRenderer::forget() { blocks_.clear(); }

QSizeF ObjectRenderer::intrinsicSize(
    QTextDocument* /*document*/, int /*position*/, const QTextFormat& format) {
    const NoteObject& object = this->object(format);
    const double width = std::max(document_.textWidth() - 1, 80.0);
    switch (object.kind) {
    case ObjectKind::picture: return pictureSize(object);
    case ObjectKind::file:
    case ObjectKind::locked: return {std::min(cardWidth, width), cardHeight};
    case ObjectKind::block: {
        QTextDocument& block = drawn(format);
        block.setTextWidth(width);
        // What is beside a narrow table is not the table.
        return {std::min(width, std::ceil(block.idealWidth()) + 1), block.size().height()};
    }
    case ObjectKind::other: break;
    }
    return object.label.empty() ? QSizeF(1, 1) : QSizeF(120, cardHeight / 2);
}

void ObjectRenderer::drawObject(
    QPainter* painter,
    const QRectF& place,
    QTextDocument* /*document*/,
    int position,
    const QTextFormat& format) {
    const NoteObject& object = this->object(format);
    std::erase_if(shown_, [&](const Shown& shown) { return shown.position == position; });
    shown_.push_back({position, place, object.kind == ObjectKind::picture});
    switch (object.kind) {
    case ObjectKind::picture: return paintPicture(*painter, place, object);
    case ObjectKind::file: {
        const QString label = QString::fromStdString(object.label);
        const QString title =
            object.attachment ? pictures_.fileTitle(*object.attachment, label) : label;
        return paintCard(*painter, place, "file", title);
    }
    case ObjectKind::locked: {
        // The lock of the placeholder is drawn as an icon.
        const QString title = QString::fromUtf8(
            SelectiveEncryption::placeholder.data(),
            static_cast<qsizetype>(SelectiveEncryption::placeholder.size()));
        return paintCard(*painter, place, "lock", title.section(' ', 1));
    }
    case ObjectKind::block: {
        painter->save();
        painter->fillRect(place, Theme::colors().surface);  // words on that of a selection drown
        painter->translate(place.topLeft());
        QAbstractTextDocumentLayout::PaintContext context;
        context.palette.setColor(QPalette::Text, Theme::colors().text);
        drawn(format).documentLayout()->draw(painter, context);
        painter->restore();
        return;
    }
    case ObjectKind::other:
        if (!object.label.empty()) {
            painter->setPen(Theme::colors().secondaryText);
            painter->drawText(place, Qt::AlignVCenter, QString::fromStdString(object.label));
        }
    }
}

QSizeF ObjectRenderer::pictureSize(const NoteObject& object) {
    const QSizeF card(std::min(cardWidth, std::max(document_.textWidth() - 1, 80.0)), cardHeight);
    QSizeF size(object.width, object.height);
    QSizeF own;
    if (object.attachment) {
        const Pictures::Picture& picture = pictures_.attachment(*object.attachment);
        if (picture.isFailed) return card;
        own = picture.image.isNull() ? QSizeF(picture.size) : QSizeF(picture.image.size());
        if (picture.size.isValid() && !picture.size.isEmpty()) own = picture.size;
    } else {
        own = Pictures::inlineImage(object.source).size();
    }
    if (own.isEmpty() && size.isEmpty()) return card;
    if (size.isEmpty()) {
        size = size.width() > 0 ? QSizeF(size.width(), size.width() * own.height() / own.width())
                                : own;
    }
    const double widest = std::max(document_.textWidth() - 1, 80.0);
    return size.width() > widest ? size.scaled(widest, size.height(), Qt::KeepAspectRatio) : size;
}

QTextDocument& ObjectRenderer::drawn(const QTextFormat& format) {
    const std::string& html = document_.style(format.toCharFormat()).object;
    std::unique_ptr<QTextDocument>& block = blocks_[html];
    if (!block || block->defaultFont() != document_.defaultFont()) {
        block = std::make_unique<DrawnBlock>(html, document_.defaultFont());
        block->setTextWidth(std::max(document_.textWidth() - 1, 80.0));
    }
    return *block;
}

void ObjectRenderer::paintPicture(
    QPainter& painter, const QRectF& place, const NoteObject& object) {
    const QImage image = object.attachment ? pictures_.attachment(*object.attachment).image
                                           : Pictures::inlineImage(object.source);
    if (image.isNull()) return paintCard(painter, place, "image", sourceName(object));
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QPixmap small = object.attachment ? shrunk(image, pixelsOf(painter, place)) : QPixmap();
    small.isNull() ? painter.drawImage(place, image)
                   : painter.drawPixmap(place, small, small.rect());
    painter.restore();
}

void ObjectRenderer::paintCard(
    QPainter& painter, const QRectF& place, const QString& icon, const QString& title) {
    const Colors& colors = Theme::colors();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors.line, 1));
    painter.setBrush(colors.code);
    painter.drawRoundedRect(place.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    const QRect sign(
        static_cast<int>(place.left()) + space::medium,
        static_cast<int>(place.center().y()) - 10,
        20,
        20);
    app::icon(icon, Ink::secondary).paint(&painter, sign);
    const QRectF words = place.adjusted(space::medium + 20 + space::small, 0, -space::medium, 0);
    painter.setFont(document_.defaultFont());
    painter.setPen(colors.text);
    const QString shown =
        QFontMetricsF(painter.font()).elidedText(title, Qt::ElideMiddle, words.width());
    painter.drawText(words, Qt::AlignVCenter | Qt::AlignLeft, shown);
    painter.restore();
}

}  // namespace tesserine::app
