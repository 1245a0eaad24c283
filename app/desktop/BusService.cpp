#include "app/desktop/BusService.h"

#include "app/state/AppEnvironment.h"
#include "base/Text.h"
#include "core/model/NoteEntities.h"
#include "core/model/TaskEntities.h"

#include <optional>

namespace tesserine::app {
namespace {

std::optional<Place> placeOf(StoreContext& context, const QString& text) {
    const auto id = Uuid::parse(text.toStdString());
    if (!id) return std::nullopt;
    if (context.find<CDNote>(*id)) return Place{.kind = Place::Kind::note, .id = *id};
    if (context.find<CDTask>(*id)) return Place{.kind = Place::Kind::task, .id = *id};
    return std::nullopt;
}

}  // namespace

BusService::BusService(AppEnvironment& environment, QDBusConnection bus, QObject* parent)
    : QObject(parent), environment_(environment), bus_(std::move(bus)) {
    isReachable_ = bus_.isConnected()
                   && bus_.registerObject(path, this, QDBusConnection::ExportScriptableSlots)
                   && bus_.registerService(name);
}

BusService::~BusService() {
    bus_.unregisterObject(path);
    if (isReachable_) bus_.unregisterService(name);
}

void BusService::NewNote() { emit asked({.kind = Request::Kind::newNote}); }

QString BusService::NewTask(const QString& text) {
    const std::string sentence = text::sanitized(text.toStdString());
    if (text::isBlank(sentence)) {
        refuse(tr("A task needs a few words."));
        return {};
    }
    try {
        // A context of its own: what waits in the window's is not to be saved with it.
        const auto context = environment_.store().newBackgroundContext();
        const CDTask& task =
            environment_.tasks().createFromSentence(*context, sentence, environment_.calendar());
        context->save();
        return QString::fromStdString(task.id->text());
    } catch (const UserError& error) {
        refuse(QString::fromStdString(error.what()));
        return {};
    }
}

void BusService::Search(const QString& query) {
    Place place{.kind = Place::Kind::search, .text = text::sanitized(query.toStdString())};
    emit asked({.kind = Request::Kind::go, .place = std::move(place)});
}

void BusService::Show(const QString& id) {
    const auto place = placeOf(environment_.context(), id);
    if (!place) return refuse(tr("There is no note and no task of this identifier."));
    emit asked({.kind = Request::Kind::go, .place = *place});
}

void BusService::refuse(const QString& sentence) {
    if (calledFromDBus()) sendErrorReply("app.tesserine.Tesserine.Error", sentence);
}

}  // namespace tesserine::app
