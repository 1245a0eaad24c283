#pragma once

#include <QObject>

namespace tesserine::app {

/// Tells that the system wants the program to end, as at a logout or a shutdown (SIGTERM, SIGHUP,
/// SIGINT). The second time it ends at once. There is one at a time, on the main thread.
class Termination final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Termination)

public:
    explicit Termination(QObject* parent = nullptr);
    ~Termination() override;

signals:
    void asked();
};

}  // namespace tesserine::app
