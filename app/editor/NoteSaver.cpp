#include "app/editor/NoteSaver.h"

#include "app/editor/BodyEdit.h"
#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"
#include "core/body/AttributedTextWriter.h"

#include <QLineEdit>

#include <utility>

namespace tesserine::app {
namespace {

/// UTF-16 units of a body that is written within a frame.
constexpr int longNote = 20'000;

}  // namespace

NoteSaver::NoteSaver(const Parts& parts, QWidget* parent)
    : QObject(parent),
      parts_(parts),
      window_(*parent),
      autosave_([this](Autosave::Occasion occasion) { return write(occasion); }),
      writing_(*this) {}

bool NoteSaver::save() {
    endWriting();  // what it could not write is written here, or told
    return autosave_.flush();
}

/// Writes what differs from what was read; nothing when that is nothing.
bool NoteSaver::write(Autosave::Occasion occasion) {
    auto& [environment, open, title, body] = parts_;
    // What is being written comes first; its end begins what waits.
    if (isWriting()) return false;
    const bool isNew = title.isModified() || body.isModified();
    if (!open.id()) return true;
    if (!isNew) {
        emit nothingToSave();
        return true;
    }
    if (open.state() == OpenNote::State::deleted) return keepAsNew();
    OpenNote::Edit edit;
    if (title.isModified()) edit.title = title.text().toStdString();
    const bool mayTakeLong = body.isModified() && body.note().characterCount() > longNote;
    if (occasion == Autosave::Occasion::whileWriting && mayTakeLong) {
        beginWriting(std::move(edit));
        return true;
    }
    if (body.isModified()) edit.html = body.note().html();
    try {
        const auto outcome = open.write(std::move(edit));
        environment.context().save();
        title.setModified(false);
        body.note().setModified(false);
        emit saved(outcome);
        return true;
    } catch (const UserError& error) {
        environment.log().error(std::string("save: ") + error.what());
        // Whoever is typing is not interrupted.
        occasion == Autosave::Occasion::now ? showNotice(&window_, error.what())
                                            : emit failed(QString::fromUtf8(error.what()));
        return false;
    }
}

/// The note was deleted for good elsewhere: what is typed here becomes another one.
bool NoteSaver::keepAsNew() {
    auto& [environment, open, title, body] = parts_;
    StoreContext& context = environment.context();
    try {
        environment.notes().createNote(
            context, {.title = title.text().toStdString(), .html = body.note().html()});
        context.save();
    } catch (const UserError& error) {
        context.rollback();
        showNotice(&window_, error.what());
        return false;
    }
    title.setModified(false);
    body.note().setModified(false);
    showNotice(
        &window_,
        "This note was deleted elsewhere while you were writing. What you wrote is kept in a new "
        "note.");
    return true;
}

/// Has another thread write the note as it is now.
void NoteSaver::beginWriting(OpenNote::Edit edit) {
    AttributedText content = parts_.body.note().content();
    parts_.title.setModified(false);
    parts_.body.note().setModified(false);
    writing_.begin(
        [&store = parts_.environment.store(),
         &notes = parts_.environment.notes(),
         writing = parts_.open.beginWriting(std::move(edit)),
         content = std::move(content)]() mutable {
            writing.edit.html = canonicalHTML(content);
            const auto context = store.newBackgroundContext();
            OpenNote::Written written = OpenNote::perform(std::move(writing), *context, notes);
            context->save();
            return written;
        },
        [this] {
            if (const auto error = endWriting()) emit failed(QString::fromStdString(*error));
            if (isPending()) schedule();
        });
}

/// Waits for what another thread writes. Tells why it was not written; it waits to be saved then.
std::optional<std::string> NoteSaver::endWriting() {
    if (!isWriting()) return {};
    std::optional<std::string> failure;
    try {
        const OpenNote::Written written = writing_.take();
        parts_.open.endWriting(written);
        parts_.environment.store().processRemoteChanges();
        emit saved(written.outcome);
    } catch (const UserError& error) {
        parts_.environment.log().error(std::string("save: ") + error.what());
        failure = error.what();
        parts_.title.setModified(true);
        parts_.body.note().setModified(true);
        autosave_.keepPending();
    }
    emit ended();
    return failure;
}

}  // namespace tesserine::app
