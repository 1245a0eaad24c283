#pragma once

#include "base/Uuid.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QString>

namespace tesserine::app {

class AppEnvironment;

/// The pictures of notes, read and decoded in the background and kept while there is room.
///
/// Belongs to the main thread. Pictures from elsewhere than the library are never fetched: reading
/// a note tells nobody that it was read.
class Pictures final : public QObject {
    Q_OBJECT

public:
    /// Wider or higher pictures are kept at this size, in pixels.
    static constexpr int largestSide = 2'000;

    explicit Pictures(AppEnvironment& environment, QObject* parent = nullptr);

    struct Picture {
        QImage image{};  ///< null while it is read, and when it cannot be
        QSize size{};    ///< as far as it is known
        QString name{};
        bool isFailed = false;
    };
    /// What is known at once; `loaded` follows when there is more to it.
    const Picture& attachment(const Uuid& id);
    /// An image whose address ("data:") holds it.
    static QImage inlineImage(const std::string& address);

    /// Something of this attachment changed: a picture that is not shown yet is read again.
    void lookAgain(const Uuid& id);

    /// The name and size in words of a file: "report.pdf, 1.2 MB".
    QString fileTitle(const Uuid& id, const QString& fallback);

    void forget();

signals:
    void loaded(const tesserine::Uuid& id);

private:
    void read(const Uuid& id);

    AppEnvironment& environment_;
    QHash<QString, Picture> pictures_;
};

}  // namespace tesserine::app
