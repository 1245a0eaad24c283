#include "app/shell/HeadStart.h"

#include <QDBusConnection>
#include <QFontDatabase>
#include <QStringList>

namespace tesserine::app {

HeadStart::HeadStart()
    : fonts_(std::async(std::launch::async, [] { QFontDatabase::families(); })),
      bus_(std::async(std::launch::async, [] { QDBusConnection::sessionBus(); })) {}

}  // namespace tesserine::app
