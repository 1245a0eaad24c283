#include "app/desktop/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSocketNotifier>
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

/// One library by all its names has one name here, short enough for a socket. The toolkit's digest
/// is there already; that of a library would have to be set up first, while the user waits.
QString nameOf(const std::filesystem::path& library) {
    const std::string path = std::filesystem::weakly_canonical(library).string();
    const QByteArray bytes = QByteArray::fromStdString(path);
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().left(16);
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

/// A later program while it hands over its arguments: one line, answered by one.
class SingleInstance::Visitor final : public QObject {
public:
    Visitor(LocalSocket socket, SingleInstance& host)
        : QObject(&host),
          host_(host),
          socket_(std::move(socket)),
          arrival_(socket_.descriptor(), QSocketNotifier::Read) {
        connect(&arrival_, &QSocketNotifier::activated, this, &Visitor::read);
    }

private:
    void read() {
        const QByteArray piece = socket_.read();
        message_ += piece;
        const bool isTooLong = message_.size() > longestMessage;
        const bool isWhole = message_.endsWith('\n');
        if (!piece.isEmpty() && !isTooLong && !isWhole) return;
        const auto arguments = isWhole && !isTooLong ? argumentsIn(message_) : std::nullopt;
        if (arguments) socket_.write(taken);
        arrival_.setEnabled(false);
        socket_ = LocalSocket();
        deleteLater();
        if (arguments) emit host_.asked(*arguments);
    }

    SingleInstance& host_;
    LocalSocket socket_;
    QSocketNotifier arrival_;
    QByteArray message_;
};

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

SingleInstance::~SingleInstance() {
    if (listener_.isOpen()) QFile::remove(socketFile());
}

void SingleInstance::listen() {
    listener_ = LocalSocket::listenAt(socketFile());
    if (!listener_.isOpen()) return;
    auto* const arrival = new QSocketNotifier(listener_.descriptor(), QSocketNotifier::Read, this);
    connect(arrival, &QSocketNotifier::activated, this, [this] {
        LocalSocket visitor = listener_.accept();
        if (visitor.isOpen()) new Visitor(std::move(visitor), *this);
    });
}

bool SingleInstance::handOver(
    const QStringList& arguments, std::chrono::milliseconds patience) const {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < patience.count()) {
        const auto left = patience - std::chrono::milliseconds(timer.elapsed());
        const auto socket = LocalSocket::connectTo(socketFile(), left);
        if (socket.isOpen()) return socket.write(messageOf(arguments)) && socket.read() == taken;
        QThread::msleep(tryAgainAfter);
    }
    return false;
}

}  // namespace tesserine::app
