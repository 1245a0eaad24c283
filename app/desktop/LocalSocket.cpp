#include "app/desktop/LocalSocket.h"

#include <QFile>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

namespace tesserine::app {
namespace {

constexpr int waitingAtOnce = 8;  // others that have not been accepted yet
constexpr qint64 piece = 64LL * 1024;

int makeSocket() { return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0); }

/// None when the name is too long for a socket.
std::optional<sockaddr_un> addressOf(const QString& file) {
    const QByteArray name = QFile::encodeName(file);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.size() >= static_cast<qsizetype>(sizeof address.sun_path)) return std::nullopt;
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    return address;
}

const sockaddr* general(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

timeval timeOf(std::chrono::milliseconds time) {
    return {.tv_sec = time.count() / 1000, .tv_usec = time.count() % 1000 * 1000};
}

}  // namespace

LocalSocket LocalSocket::listenAt(const QString& file) {
    const auto address = addressOf(file);
    LocalSocket socket(makeSocket());
    if (!address || !socket.isOpen()) return {};
    QFile::remove(file);  // left by a program that was killed
    constexpr mode_t forTheUser = 0600;
    const bool isListening = ::fchmod(socket.descriptor_, forTheUser) == 0
                             && ::bind(socket.descriptor_, general(*address), sizeof *address) == 0
                             && ::listen(socket.descriptor_, waitingAtOnce) == 0;
    return isListening ? std::move(socket) : LocalSocket();
}

LocalSocket LocalSocket::connectTo(const QString& file, std::chrono::milliseconds patience) {
    const auto address = addressOf(file);
    LocalSocket socket(makeSocket());
    if (!address || !socket.isOpen()) return {};
    const timeval time = timeOf(patience);
    for (const int limit : {SO_RCVTIMEO, SO_SNDTIMEO}) {
        ::setsockopt(socket.descriptor_, SOL_SOCKET, limit, &time, sizeof time);
    }
    const bool isConnected = ::connect(socket.descriptor_, general(*address), sizeof *address) == 0;
    return isConnected ? std::move(socket) : LocalSocket();
}

LocalSocket LocalSocket::accept() const {
    return LocalSocket(::accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC));
}

LocalSocket::~LocalSocket() {
    if (isOpen()) ::close(descriptor_);
}

QByteArray LocalSocket::read() const {
    QByteArray bytes(piece, Qt::Uninitialized);
    ssize_t count = 0;
    do {
        count = ::recv(descriptor_, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
    } while (count < 0 && errno == EINTR);
    bytes.resize(count > 0 ? count : 0);
    return bytes;
}

bool LocalSocket::write(const QByteArray& bytes) const {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const auto left = static_cast<std::size_t>(bytes.size() - written);
        const ssize_t count = ::send(descriptor_, bytes.constData() + written, left, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) written += count;
    }
    return true;
}

}  // namespace tesserine::app
