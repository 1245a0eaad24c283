#pragma once

#include "app/desktop/Request.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>

namespace tesserine::app {

class AppEnvironment;

/// What other programs may ask over the session bus, as `app.tesserine.Tesserine` at
/// `/app/tesserine/Tesserine`: shortcuts of the desktop, scripts, launchers.
///
/// A failure is answered as an error with its sentence. Belongs to the main thread.
class BusService final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BusService)
    Q_CLASSINFO("D-Bus Interface", "app.tesserine.Tesserine")

public:
    static constexpr const char* name = "app.tesserine.Tesserine";
    static constexpr const char* path = "/app/tesserine/Tesserine";

    BusService(AppEnvironment& environment, QDBusConnection bus, QObject* parent = nullptr);
    ~BusService() override;

    /// Whether other programs can reach it: there is a bus, and no other window has its name.
    bool isReachable() const { return isReachable_; }

public slots:
    // Their names are those of the bus. NOLINTBEGIN(readability-identifier-naming)

    /// Opens an empty note in the window.
    Q_SCRIPTABLE void NewNote();
    /// Makes a task from a quick-add sentence, without the window; answers its identifier.
    Q_SCRIPTABLE QString NewTask(const QString& text);
    /// Shows what the query finds in the window.
    Q_SCRIPTABLE void Search(const QString& query);
    /// Shows the note or task of this identifier in the window.
    Q_SCRIPTABLE void Show(const QString& id);
    // NOLINTEND(readability-identifier-naming)

signals:
    /// The window is asked to do this and to come to the front.
    void asked(const tesserine::app::Request& request);

private:
    void refuse(const QString& sentence);

    AppEnvironment& environment_;
    QDBusConnection bus_;
    bool isReachable_ = false;
};

}  // namespace tesserine::app
