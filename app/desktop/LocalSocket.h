#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <utility>

namespace tesserine::app {

/// A stream to another program of this user, or the place where such streams arrive; a file stands
/// for it. Closed when it goes away. The toolkit's own would bring a dozen libraries along, for
/// which every start would have to wait.
class LocalSocket {
public:
    /// Listens at `file`, in place of what was there. Not open where that is impossible.
    static LocalSocket listenAt(const QString& file);
    /// Not open when nobody listens there. Neither this nor reading and writing waits for longer
    /// than `patience`, which is above zero.
    static LocalSocket connectTo(const QString& file, std::chrono::milliseconds patience);
    /// The next one that arrived where this one listens; waits for it.
    LocalSocket accept() const;

    LocalSocket() = default;
    LocalSocket(const LocalSocket&) = delete;
    LocalSocket& operator=(const LocalSocket&) = delete;
    LocalSocket(LocalSocket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    LocalSocket& operator=(LocalSocket&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~LocalSocket();

    bool isOpen() const { return descriptor_ >= 0; }
    int descriptor() const { return descriptor_; }

    /// Waits until something came; empty when the other end has closed, or patience is over.
    QByteArray read() const;
    /// Whether all of it was taken.
    bool write(const QByteArray& bytes) const;

private:
    explicit LocalSocket(int descriptor) : descriptor_(descriptor) {}

    int descriptor_ = -1;
};

}  // namespace tesserine::app
