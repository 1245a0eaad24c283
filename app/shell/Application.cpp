#include "app/shell/Application.h"

#include <exception>

namespace tesserine::app {

bool Application::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& error) {
        const auto tell = [this, sentence = QString::fromUtf8(error.what())] {
            emit failed(sentence);
        };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
        return true;
    }
}

}  // namespace tesserine::app
