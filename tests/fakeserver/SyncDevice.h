#pragma once

#include "base/Clock.h"
#include "core/services/AttachmentService.h"
#include "core/services/NoteService.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "core/tasks/TaskService.h"
#include "sync/AccountSession.h"
#include "sync/SyncClient.h"
#include "sync/SyncEngine.h"
#include "tests/fakeserver/FakeSyncServer.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace tesserine::test {

/// One computer with a library of its own, signed in to a service.
class SyncDevice {
public:
    /// `code` is what the sign-in hands over.
    explicit SyncDevice(
        HTTPTransport& service, std::uint64_t seed = 1, const std::string& code = "code");

    /// Synchronises; tells what went wrong, or nothing.
    std::string sync(const SyncEngine::Consent& consent = {});
    /// Forgets everything in memory, as after a kill, and opens the library again.
    void restart();
    void setViewedNote(const std::optional<Uuid>& note) { engine_->setViewedNote(note); }
    void signIn(const std::string& code = "code") { session_->completeSignIn(code, "Device"); }
    /// A fresh look at what is saved.
    StoreContext& context();
    void save() { context_->save(); }
    std::filesystem::path library() const { return folder_.path() / "Library"; }

    CDNote& addNote(const std::string& title, const std::string& html);
    CDNote* note(const Uuid& id) { return context().find<CDNote>(id); }
    /// Replaces the body as an editor does, and saves.
    void write(const Uuid& note, const std::string& html);

    /// Every record of the library as one line of JSON, by identifier.
    std::map<std::string, std::string> dump();
    /// All bodies of notes and revisions.
    std::string allBodies();

    FixedClock clock{*Instant::parseISO("2026-03-14T09:15:00Z")};
    SeededRandom random;
    LossyNetwork network;
    NoteService notes{clock};
    mime::TypeRegistry types;
    AttachmentService attachments{clock, types};
    SyncSummary summary;  ///< of the last successful `sync`

private:
    TemporaryFolder folder_;
    std::unique_ptr<TesserineStore> store_;
    std::unique_ptr<StoreContext> context_;
    InMemorySecrets secrets_;
    std::unique_ptr<SyncClient> client_;
    std::unique_ptr<AccountSession> session_;
    std::unique_ptr<SyncEngine> engine_;
};

}  // namespace tesserine::test
