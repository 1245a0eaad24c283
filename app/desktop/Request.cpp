#include "app/desktop/Request.h"

#include "base/Product.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

namespace tesserine::app {
namespace {

constexpr const char* newNoteWord = "new-note";
constexpr const char* newTaskWord = "new-task";
constexpr const char* signInHost = "auth";

QString addressBeginning() {
    return QString::fromStdString(std::string(product::urlScheme) + "://");
}

}  // namespace

std::optional<Request> Request::fromArgument(const QString& argument, const QString& folder) {
    if (argument.isEmpty()) return Request{};
    if (argument == newNoteWord) return Request{.kind = Kind::newNote};
    if (argument == newTaskWord) return Request{.kind = Kind::newTask};
    if (argument.startsWith(addressBeginning(), Qt::CaseInsensitive)) {
        if (QUrl(argument).host() == signInHost) {
            return Request{.kind = Kind::signedIn, .text = argument};
        }
        const auto place = Place::fromAddress(argument.toStdString());
        if (!place) return std::nullopt;
        return Request{.kind = Kind::go, .place = *place};
    }
    // File managers hand over "file:///…".
    const QUrl url(argument);
    const QString path = url.isLocalFile() ? url.toLocalFile() : QDir(folder).filePath(argument);
    if (!QFileInfo::exists(path)) return std::nullopt;
    return Request{.kind = Kind::openFile, .text = QDir::cleanPath(path)};
}

QString Request::argument() const {
    switch (kind) {
    case Kind::activate: return {};
    case Kind::newNote: return newNoteWord;
    case Kind::newTask: return newTaskWord;
    case Kind::go: return QString::fromStdString(place.address());
    case Kind::openFile:
    case Kind::signedIn: return text;
    }
    return {};
}

}  // namespace tesserine::app
