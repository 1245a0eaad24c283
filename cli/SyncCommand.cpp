#include "cli/Session.h"
#include "cli/SyncAccess.h"
#include "core/store/TesserineStore.h"
#include "sync/LiveInbox.h"
#include "sync/SyncEngine.h"
#include "sync/SyncSchedule.h"

#include <boost/json/object.hpp>

namespace tesserine::cli {

namespace {

std::string count(std::size_t number, const std::string& one, const std::string& many) {
    return std::to_string(number) + " " + (number == 1 ? one : many);
}

std::string sentenceOf(const SyncSummary& summary) {
    const bool isQuiet = summary.received + summary.sent + summary.filesReceived == 0;
    std::string text = isQuiet ? "Everything is in step."
                               : "Received " + count(summary.received, "change", "changes")
                                     + ", sent " + count(summary.sent, "change", "changes") + ".";
    if (summary.filesReceived > 0) {
        text += " Fetched " + count(summary.filesReceived, "file", "files") + ".";
    }
    if (summary.conflicts > 0) {
        text += " " + count(summary.conflicts, "item was", "items were")
                + " changed on two devices: the other version is kept on this device.";
    }
    if (summary.unreadable > 0) {
        text += " " + count(summary.unreadable, "change", "changes")
                + " of other devices could not be read.";
    }
    if (summary.refused > 0) {
        text += " The server did not take " + count(summary.refused, "change", "changes") + ".";
    }
    if (summary.filesFailed > 0) {
        text += " " + count(summary.filesFailed, "file", "files") + " could not be fetched.";
    }
    return text;
}

void show(Session& session, const SyncSummary& summary) {
    if (!session.output().isJSON()) {
        session.output().line(sentenceOf(summary));
    } else {
        session.output().json(
            {{"received", summary.received},
             {"unreadable", summary.unreadable},
             {"sent", summary.sent},
             {"deleted", summary.deleted},
             {"conflicts", summary.conflicts},
             {"refused", summary.refused},
             {"filesReceived", summary.filesReceived},
             {"filesFailed", summary.filesFailed}});
    }
    session.output().flush();
}

bool didSomething(const SyncSummary& summary) {
    return summary.received + summary.sent + summary.filesReceived + summary.refused > 0;
}

/// Keeps a library in step until Ctrl-C: at news from the service, after a change here, and every
/// few minutes. What fails for a while is tried again.
class Watch {
public:
    Watch(Session& session, SyncService& service, SyncEngine& engine)
        : session_(session),
          service_(service),
          engine_(engine),
          schedule_(session.environment().clock) {}

    [[noreturn]] void run(const SyncEngine::Consent& consent) {
        for (;;) {
            if (schedule_.isDue(session_.store().lastTransactionNumber())) synchronise(consent);
            warnOnce();  // not before somebody who is signed out was told so
            for (const LiveNews& news : inbox_.take(SyncSchedule::look, session_.stop())) {
                hear(news);
            }
            session_.throwIfStopped();
        }
    }

private:
    void synchronise(const SyncEngine::Consent& consent) {
        try {
            const SyncSummary summary = engine_.synchronise(consent, session_.stop());
            schedule_.succeeded(session_.store().lastTransactionNumber());
            if (didSomething(summary)) show(session_, summary);
            if (!channel_) {
                channel_ = service_.listen([this](const LiveNews& news) { inbox_.post(news); });
            }
        } catch (const SyncError& error) {
            if (!error.isTransient()) throw;
            schedule_.failed(error);
            session_.remark(error.what());
        }
    }

    void hear(const LiveNews& news) {
        if (news.kind == LiveNews::Kind::signedOut) service_.account().invalidateAccessToken();
        if (news.kind == LiveNews::Kind::closed) isClosed_ = true;
        if (news.kind == LiveNews::Kind::opened) isClosed_ = false;
        schedule_.hear(news, engine_.cursor());
    }

    void warnOnce() {
        if (!isClosed_ || isWarned_) return;
        session_.remark("The service tells no news at the moment: looking every 5 minutes.");
        isWarned_ = true;
    }

    Session& session_;
    SyncService& service_;
    SyncEngine& engine_;
    SyncSchedule schedule_;
    LiveInbox inbox_;
    bool isClosed_ = false;
    bool isWarned_ = false;
    std::unique_ptr<LiveUpdates> channel_;  // last: it ends before the inbox
};

ExitStatus sync(Session& session, const Arguments& arguments) {
    const auto service = syncService(session);
    SyncEngine engine(
        {.store = session.store(),
         .session = service->account(),
         .client = service->client(),
         .clock = session.clock(),
         .random = session.environment().random,
         .log = session.log()});
    const SyncEngine::Consent consent{
        .anotherAccount = arguments.has("another-account"),
        .manyDeletions = arguments.has("many-deletions")};
    if (arguments.has("watch")) Watch(session, *service, engine).run(consent);
    show(session, engine.synchronise(consent, session.stop()));
    return ExitStatus::done;
}

}  // namespace

std::vector<Command> syncCommands() {
    return {
        {.path = "sync",
         .summary = "Brings the library in step with the account's other devices",
         .access = Access::writes,
         .options =
             {{.name = "watch", .value = "", .summary = "Go on until Ctrl-C"},
              {.name = "another-account",
               .value = "",
               .summary = "Add the library to this account though it was synced with another"},
              {.name = "many-deletions",
               .value = "",
               .summary = "Delete here what was deleted elsewhere, however much"}},
         .example = "tesserine sync",
         .run = sync}};
}

}  // namespace tesserine::cli
