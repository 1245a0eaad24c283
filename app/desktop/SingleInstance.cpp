#include "app/desktop/SingleInstance.h"

#include "base/Digest.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QThread>

#include <optional>
#include <string>
#include <utility>

namespace tesserine::app {
namespace {

constexpr qint64 longestMessage = 256LL * 1024;
constexpr const char* taken = "taken\n";
constexpr int tryAgainAfter = 50;  // milliseconds

QString nameIn(const QString& runtimeFolder, const QString& name) {
    return QDir(runtimeFolder).filePath("tesserine-" + name);
}

/// One library by all its names has one name here, short enough for a socket.
QString nameOf(const std::filesystem::path& library) {
    const std::string path = std::filesystem::weakly_canonical(library).string();
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(path.data());
    return QString::fromStdString(sha256Hex({bytes, path.size()}).substr(0, 16));
}

QString nameOf(SingleInstance::Post post) {
    switch (post) {
    case SingleInstance::Post::signIn: return "sign-in";
    }
    return {};
}

QByteArray messageOf(const QStringList& arguments) {
    const QJsonDocument document(QJsonArray::fromStringList(arguments));
    return document.toJson(QJsonDocument::Compact) + "\n";
}

std::optional<QStringList> argumentsIn(const QByteArray& message) {
    const QJsonDocument document = QJsonDocument::fromJson(message);
    if (!document.isArray()) return std::nullopt;
    QStringList arguments;
    for (const QJsonValue value : document.array()) {
        arguments.append(value.toString());
    }
    return arguments;
}

}  // namespace

SingleInstance::SingleInstance(const std::filesystem::path& library, const QString& runtimeFolder)
    : SingleInstance(nameIn(runtimeFolder, nameOf(library))) {}

SingleInstance::SingleInstance(Post post, const QString& runtimeFolder)
    : SingleInstance(nameIn(runtimeFolder, nameOf(post))) {}

SingleInstance::SingleInstance(QString name) : name_(std::move(name)), lock_(name_ + ".lock") {
    // The lock of a program that runs never grows old; that of one which is gone is taken over.
    lock_.setStaleLockTime(0);
    isFirst_ = lock_.tryLock(0);
    if (isFirst_) listen();
}

void SingleInstance::listen() {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    QLocalServer::removeServer(name_ + ".socket");  // left by one that was killed
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* visitor = server_.nextPendingConnection()) {
            serve(*visitor);
        }
    });
    server_.listen(name_ + ".socket");
}

void SingleInstance::serve(QLocalSocket& visitor) {
    connect(&visitor, &QLocalSocket::disconnected, &visitor, &QObject::deleteLater);
    const auto read = [this, &visitor] {
        if (visitor.bytesAvailable() > longestMessage) return visitor.abort();
        if (!visitor.canReadLine()) return;
        const auto arguments = argumentsIn(visitor.readLine());
        if (!arguments) return visitor.abort();
        visitor.write(taken);
        visitor.disconnectFromServer();
        emit asked(*arguments);
    };
    connect(&visitor, &QLocalSocket::readyRead, this, read);
    read();
}

bool SingleInstance::handOver(
    const QStringList& arguments, std::chrono::milliseconds patience) const {
    QElapsedTimer timer;
    timer.start();
    const auto left = [&] { return static_cast<int>(patience.count() - timer.elapsed()); };
    while (left() > 0) {
        QLocalSocket socket;
        socket.connectToServer(name_ + ".socket");
        if (socket.waitForConnected(left())) {
            socket.write(messageOf(arguments));
            while (left() > 0 && !socket.canReadLine() && socket.waitForReadyRead(left())) {}
            return socket.readLine() == taken;
        }
        QThread::msleep(tryAgainAfter);
    }
    return false;
}

}  // namespace tesserine::app
