#pragma once

#include <QApplication>

namespace tesserine::app {

/// An application that outlives what goes wrong while it handles an event, such as a disk that is
/// gone: nothing that is being typed may be lost for it.
class Application final : public QApplication {
    Q_OBJECT

public:
    using QApplication::QApplication;

signals:
    /// Once the event is over.
    void failed(const QString& sentence);

private:
    bool notify(QObject* receiver, QEvent* event) override;
};

}  // namespace tesserine::app
