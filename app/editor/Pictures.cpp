#include "app/editor/Pictures.h"

#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "core/model/NoteEntities.h"

#include <QBuffer>
#include <QImageReader>

#include <memory>
#include <utility>

namespace tesserine::app {
namespace {

/// Decodes at most `Pictures::largestSide` wide and high. Any thread.
QImage decoded(const QByteArray& bytes) {
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    const QSize largest(Pictures::largestSide, Pictures::largestSide);
    const bool isTooLarge = size.width() > largest.width() || size.height() > largest.height();
    if (isTooLarge) reader.setScaledSize(size.scaled(largest, Qt::KeepAspectRatio));
    return reader.read();
}

}  // namespace

Pictures::Pictures(AppEnvironment& environment, QObject* parent)
    : QObject(parent), environment_(environment) {}

const Pictures::Picture& Pictures::attachment(const Uuid& id) {
    const QString key = QString::fromStdString(id.text());
    if (const auto known = pictures_.constFind(key); known != pictures_.constEnd()) return *known;
    Picture& picture = pictures_[key];
    const CDAttachment* const attachment = environment_.context().find<CDAttachment>(id);
    if (attachment == nullptr) {
        picture.isFailed = true;
        return picture;
    }
    picture.size = QSizeF(attachment->width.valueOr(0), attachment->height.valueOr(0)).toSize();
    picture.name = QString::fromStdString(attachment->filename.valueOr(""));
    read(id);
    return picture;
}

void Pictures::lookAgain(const Uuid& id) {
    const auto known = pictures_.constFind(QString::fromStdString(id.text()));
    if (known == pictures_.constEnd() || !known->image.isNull()) return;
    pictures_.erase(known);
    emit loaded(id);
}

void Pictures::read(const Uuid& id) {
    // Owned by the work and by what follows it on the main thread.
    const auto result = std::make_shared<QImage>();
    const auto show = [this, id, result] {
        Picture& picture = pictures_[QString::fromStdString(id.text())];
        // One that was looked at again may have come first.
        if (result->isNull() && !picture.image.isNull()) return;
        picture.image = *result;
        picture.isFailed = result->isNull();
        emit loaded(id);
    };
    environment_.inBackground(
        [id, result](StoreContext& context, const std::stop_token&) {
            const CDAttachment* const attachment = context.find<CDAttachment>(id);
            if (attachment == nullptr || !attachment->fileData) return;
            const Bytes& bytes = *attachment->fileData;
            *result = decoded(QByteArray::fromRawData(
                reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())));
        },
        this,
        show,
        [show](const std::string&) { show(); });
}

QImage Pictures::inlineImage(const std::string& address) {
    const std::size_t comma = address.find(',');
    if (!address.starts_with("data:image/") || comma == std::string::npos) return {};
    return decoded(QByteArray::fromBase64(QByteArray::fromStdString(address.substr(comma + 1))));
}

QString Pictures::fileTitle(const Uuid& id, const QString& fallback) {
    const CDAttachment* const attachment = environment_.context().find<CDAttachment>(id);
    if (attachment == nullptr) return fallback;
    const QString name = QString::fromStdString(attachment->filename.valueOr(""));
    const QString size = shownSize(attachment->byteCount.valueOr(0));
    return (name.isEmpty() ? fallback : name) + ", " + size;
}

void Pictures::forget() { pictures_.clear(); }

}  // namespace tesserine::app
