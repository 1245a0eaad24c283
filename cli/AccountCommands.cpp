#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "cli/SyncAccess.h"
#include "sync/AccountValues.h"
#include "sync/SyncEngine.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <istream>

namespace tesserine::cli {

namespace {

boost::json::value isoOrNull(const std::optional<Instant>& instant) {
    return instant ? boost::json::value(instant->iso()) : boost::json::value(nullptr);
}

ExitStatus signIn(Session& session, const Arguments&) {
    const auto service = syncService(session);
    const std::string address = service->account().beginSignIn();
    session.environment().error
        << "Open this address in a browser and sign in:\n\n    " << address
        << "\n\nThe browser is sent to an address that begins with “tesserine://auth”. Paste it "
           "here:\n";
    session.environment().error.flush();
    std::string line;
    std::getline(session.environment().input, line);
    session.throwIfStopped();
    const std::string callback(text::trimmed(line));
    if (!service->account().handleCallback(callback, deviceLabel(), session.stop())) {
        throw CommandError::badInput("That is not the address a sign-in ends with.");
    }
    const auto account = service->account().account();
    session.remark("Signed in as " + oneLine(account ? account->email : "") + ".");
    return ExitStatus::done;
}

ExitStatus signOut(Session& session, const Arguments&) {
    syncService(session)->account().signOut();
    session.remark("Signed out. The notes stay on this computer.");
    return ExitStatus::done;
}

ExitStatus accountStatus(Session& session, const Arguments&) {
    const auto service = syncService(session);
    const auto account = service->account().account();
    std::optional<Instant> last;
    std::size_t waiting = 0;
    if (session.hasLibrary()) {
        SyncEngine engine(
            {.store = session.store(),
             .session = service->account(),
             .client = service->client(),
             .clock = session.clock(),
             .random = session.environment().random});
        last = engine.lastSync();
        waiting = engine.waitingCount();
    }
    if (session.output().isJSON()) {
        session.output().json(
            {{"service", service->client().baseURL()},
             {"isSignedIn", account.has_value()},
             {"email", account ? boost::json::value(account->email) : nullptr},
             {"lastSync", isoOrNull(last)},
             {"waitingChanges", waiting}});
        return ExitStatus::done;
    }
    showField(session, "Service", service->client().baseURL());
    showField(session, "Account", account ? oneLine(account->email) : "signed out");
    showField(session, "Last sync", last ? session.localTime(*last) : "never");
    if (waiting > 0) showField(session, "Waiting changes", std::to_string(waiting));
    return ExitStatus::done;
}

ExitStatus setService(Session& session, const Arguments& arguments) {
    if (const auto address = arguments.wordIfAny(0)) {
        session.preferences().set(SyncService::addressKey, SyncService::checked(*address));
        session.remark("Sync uses this service from now on. Sign in to it next.");
    } else {
        session.preferences().remove(SyncService::addressKey);
        session.remark("Sync uses the service of this build, if it has one.");
    }
    return ExitStatus::done;
}

ExitStatus devices(Session& session, const Arguments& arguments) {
    const auto service = syncService(session);
    if (const auto id = arguments.text("sign-out")) {
        service->client().revokeSession(*id, session.stop());
        session.remark("The device is signed out.");
        return ExitStatus::done;
    }
    boost::json::array list;
    Table table{
        .columns = {
            {.title = "Device", .mayShrink = true}, {.title = "Last used"}, {.title = "ID"}}};
    for (const JSONValue& one : service->client().sessions(session.stop())) {
        const auto device = DeviceSessionInfo::from(one);
        if (!device) continue;
        list.push_back(
            {{"id", device->id},
             {"kind", device->kind},
             {"label", device->label},
             {"lastUsed", isoOrNull(device->lastUsed)},
             {"isCurrentDevice", device->isCurrentDevice}});
        table.rows.push_back(
            {device->label + (device->isCurrentDevice ? " (this one)" : ""),
             localText(session, device->lastUsed),
             device->id});
    }
    if (session.output().isJSON()) {
        session.output().json(list);
    } else {
        session.output().table(table);
    }
    return ExitStatus::done;
}

ExitStatus createToken(Session& session, SyncService& service, const std::string& label) {
    const auto token = NewAPIToken::of(service.client().createAPIToken(label, session.stop()));
    if (session.output().isJSON()) {
        session.output().json({{"id", token.id}, {"label", token.label}, {"token", token.token}});
        return ExitStatus::done;
    }
    session.remark(
        "A personal API token can read and write this account's notes, exactly like a signed-in "
        "device. It cannot create another token, sign another device out, change this account, or "
        "share a note.");
    session.output().line(token.token);
    return ExitStatus::done;
}

ExitStatus tokens(Session& session, const Arguments& arguments) {
    const auto service = syncService(session);
    if (const auto label = arguments.text("create")) {
        if (text::isBlank(*label)) {
            throw CommandError::badInput("A token needs a label that tells what it is for.");
        }
        return createToken(session, *service, *label);
    }
    if (const auto id = arguments.text("delete")) {
        service->client().revokeAPIToken(*id, session.stop());
        session.remark("The token is gone.");
        return ExitStatus::done;
    }
    boost::json::array list;
    Table table{
        .columns = {
            {.title = "Token", .mayShrink = true},
            {.title = "Made"},
            {.title = "Last used"},
            {.title = "ID"}}};
    for (const APITokenInfo& info : service->client().apiTokens(session.stop())) {
        const APIToken token = APIToken::of(info);
        list.push_back(
            {{"id", token.id},
             {"label", token.label},
             {"createdAt", token.createdAt.iso()},
             {"lastUsed", isoOrNull(token.lastUsed)},
             {"expiresAt", isoOrNull(info.expiresAt)}});
        table.rows.push_back(
            {token.label,
             session.localTime(token.createdAt),
             localText(session, token.lastUsed),
             token.id});
    }
    if (session.output().isJSON()) {
        session.output().json(list);
    } else {
        session.output().table(table);
    }
    return ExitStatus::done;
}

boost::json::value bytesOrNull(const std::optional<std::int64_t>& bytes) {
    return bytes ? boost::json::value(*bytes) : boost::json::value(nullptr);
}

/// "2.1 MB of 10 MB"; without a limit the amount alone.
std::string meter(std::int64_t used, const std::optional<std::int64_t>& limit) {
    const auto text = [](std::int64_t bytes) {
        return byteText(static_cast<std::uint64_t>(std::max<std::int64_t>(bytes, 0)));
    };
    return text(used) + (limit ? " of " + text(*limit) : "");
}

ExitStatus storage(Session& session, const Arguments&) {
    const auto service = syncService(session);
    const SyncStateResponse state = service->client().state(session.stop());
    const BlobUsage files = service->client().blobUsage(session.stop());
    const std::int64_t records = state.recordBytes.value_or(0) + state.revisionBytes.value_or(0);
    if (session.output().isJSON()) {
        session.output().json(
            {{"records", state.records},
             {"recordBytes", bytesOrNull(state.recordBytes)},
             {"revisionBytes", bytesOrNull(state.revisionBytes)},
             {"recordQuotaBytes", bytesOrNull(state.recordQuotaBytes)},
             {"files", bytesOrNull(files.files)},
             {"fileBytes", bytesOrNull(files.bytes)},
             {"fileQuotaBytes", bytesOrNull(files.quotaBytes)}});
        return ExitStatus::done;
    }
    showField(session, "Notes", meter(records, state.recordQuotaBytes));
    showField(session, "Files", meter(files.bytes.value_or(0), files.quotaBytes));
    return ExitStatus::done;
}

ExitStatus share(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    const auto service = syncService(session);
    SyncClient& client = service->client();
    const bool onlyLooks = arguments.has("status");
    const NoteShare share = onlyLooks ? NoteShare::of(client.shareStatus(*note.id, session.stop()))
                                      : NoteShare::of(client.createShare(*note.id, session.stop()));
    if (session.output().isJSON()) {
        session.output().json(
            {{"isShared", share.isShared},
             {"url", share.url ? boost::json::value(*share.url) : nullptr},
             {"createdAt", isoOrNull(share.createdAt)}});
    } else if (share.url) {
        session.output().line(oneLine(*share.url));
    } else if (share.isShared) {
        const std::string since = localText(session, share.createdAt);
        session.output().line("Shared since " + since + ".");
    } else {
        session.output().line("Not shared.");
    }
    return ExitStatus::done;
}

ExitStatus unshare(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    syncService(session)->client().revokeShare(*note.id, session.stop());
    session.remark(quotedTitle(note) + " is no longer shared.");
    return ExitStatus::done;
}

}  // namespace

std::vector<Command> accountCommands() {
    return {
        {.path = "account sign-in",
         .summary = "Signs in to the sync service, by way of a browser",
         .access = Access::none,
         .example = "tesserine account sign-in",
         .run = signIn},
        {.path = "account sign-out",
         .summary = "Signs out; the notes stay here",
         .access = Access::none,
         .example = "tesserine account sign-out",
         .run = signOut},
        {.path = "account status",
         .summary = "Shows who is signed in and when the library was last synced",
         .access = Access::reads,
         .example = "tesserine account status",
         .run = accountStatus},
        {.path = "account service",
         .summary = "Names the service to sync with",
         .access = Access::none,
         .arguments = {{.name = "ADDRESS", .isOptional = true}},
         .details = "Without an address, the service of this build is used again.",
         .example = "tesserine account service https://notes.example.org",
         .run = setService},
        {.path = "account devices",
         .summary = "Lists the devices that are signed in to the account",
         .access = Access::none,
         .options =
             {{.name = "sign-out", .value = "ID", .summary = "Sign this device out instead"}},
         .example = "tesserine account devices",
         .run = devices},
        {.path = "account storage",
         .summary = "Shows how much the account keeps at the service, and how much it may keep",
         .access = Access::none,
         .example = "tesserine account storage",
         .run = storage},
        {.path = "account tokens",
         .summary = "Lists the account's personal API tokens",
         .access = Access::none,
         .options =
             {{.name = "create",
               .value = "LABEL",
               .summary = "Make a token instead; its secret is shown once"},
              {.name = "delete", .value = "ID", .summary = "Delete a token instead"}},
         .example = "tesserine account tokens --create 'Backup script'",
         .run = tokens},
        {.path = "note share",
         .summary = "Shares a note under a public address and prints it",
         .arguments = {{.name = "NOTE"}},
         .options =
             {{.name = "status",
               .value = "",
               .summary = "Only tell whether it is shared; the address was shown once"}},
         .details = "A note that is shared already gets another address; the old one ends.",
         .example = "tesserine note share 'Packing list'",
         .run = share},
        {.path = "note unshare",
         .summary = "Ends the sharing of a note",
         .arguments = {{.name = "NOTE"}},
         .example = "tesserine note unshare 'Packing list'",
         .run = unshare}};
}

}  // namespace tesserine::cli
