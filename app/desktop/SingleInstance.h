#pragma once

#include "app/desktop/LocalSocket.h"

#include <QLockFile>
#include <QObject>
#include <QStringList>

#include <chrono>
#include <filesystem>

namespace tesserine::app {

/// Sees to it that one window works on a library, and that the browser finds the one that waits for
/// it. The first program holds a lock and listens; a later one hands its arguments over and ends.
///
/// Belongs to the main thread. The lock goes with the object, and with the process however it ends.
class SingleInstance final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SingleInstance)

public:
    /// What one program at a time waits for, whatever its library.
    enum class Post { signIn };

    /// `runtimeFolder` is private to the user and there already (`$XDG_RUNTIME_DIR`); the two files
    /// in it are named after the library.
    SingleInstance(const std::filesystem::path& library, const QString& runtimeFolder);
    SingleInstance(Post post, const QString& runtimeFolder);
    ~SingleInstance() override;

    /// Whether this program is the one of the library or post. Only then is `asked` sent.
    bool isFirst() const { return isFirst_; }

    /// Hands the arguments to the first program and tells whether it took them. Waits while that
    /// one starts.
    bool handOver(
        const QStringList& arguments,
        std::chrono::milliseconds patience = std::chrono::seconds(5)) const;

signals:
    /// A later start handed over these arguments; none: it only wants the window to be seen.
    void asked(const QStringList& arguments);

private:
    class Visitor;

    explicit SingleInstance(QString name);
    void listen();
    QString socketFile() const { return name_ + ".socket"; }

    const QString name_;  // of both files, without their ends
    QLockFile lock_;
    LocalSocket listener_;
    bool isFirst_ = false;
};

}  // namespace tesserine::app
