#include "cli/BodyInput.h"
#include "cli/CommandError.h"
#include "cli/IndexWork.h"
#include "cli/Names.h"
#include "cli/Passphrase.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "core/body/SelectiveEncryption.h"
#include "core/services/PassageService.h"
#include "search/SearchCoordinator.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <filesystem>
#include <utility>
#include <variant>

namespace tesserine::cli {

namespace {

PassageService passagesOf(Session& session) {
    return {session.notes(), session.environment().random};
}

std::string passageFrom(Session& session, const Arguments& arguments) {
    const auto passage = arguments.text("text");
    if (!passage) throw UsageError::missingValue("--text", "PASSAGE");
    if (*passage != "-") return *passage;
    const bool isPassphraseElsewhere = arguments.path("passphrase-file").value_or("-") != "-";
    if (!isPassphraseElsewhere) {
        throw UsageError::because(
            "When the passage comes from standard input, --passphrase-file must name a file.");
    }
    return readText(session, "-");
}

/// Whether earlier versions go: yes unless the user says otherwise.
bool wantsCopiesRemoved(Session& session, const Arguments& arguments) {
    if (arguments.has("keep-versions")) return false;
    return askOnTerminal(
               session,
               "Earlier versions of this note still contain this text. Remove them?",
               Answer::yes)
           == Answer::yes;
}

void removeCopies(
    Session& session, const Arguments& arguments, CDNote& note, std::string_view passage) {
    const auto copies = PassageService::copiesOf(note, passage);
    if (copies.canBeRemoved() && wantsCopiesRemoved(session, arguments)) {
        PassageService::remove(session.context(), note, copies);
    }
    if (copies.isInNote) {
        session.remark(
            "The text still stands in the title of the note, or in a table or another block that "
            "cannot be edited.");
    }
}

/// Whether the search index, if there is one, holds no more than the library does.
bool forgetInIndex(Session& session) {
    if (!std::filesystem::exists(session.libraryFolder() / SearchIndex::fileName)) return true;
    try {
        IndexWork work(session, "Indexing");
        SearchCoordinator coordinator(
            session.store(), {.clock = session.clock(), .log = session.log()});
        return coordinator.forgetDeleted(work);
    } catch (const SQLiteDatabase::Error& error) {
        session.log().warning(std::string("search index: ") + error.what());
        return false;
    }
}

/// What was deleted stays in no file that this program keeps.
void forgetDeleted(Session& session) {
    if (!session.store().emptyJournal()) {
        session.remark(
            "Another program is using the library. Its journal may hold the text until that "
            "program is closed.");
    }
    if (!forgetInIndex(session)) {
        session.remark(
            "The search index may still hold the text; “tesserine index rebuild” takes it out.");
    }
    session.remark(
        "Backups, exports and what a sync service keeps are older copies: they may still hold the "
        "text.");
}

ExitStatus lockPassage(Session& session, const Arguments& arguments) {
    const std::string passage = passageFrom(session, arguments);
    const SecretBytes passphrase = passphraseFrom(session, arguments, PassphraseUse::isNew);
    CDNote& note = resolveNote(session, arguments.word(0));
    passagesOf(session).lock(session.context(), note, passage, passphrase.text());
    removeCopies(session, arguments, note, passage);
    session.context().save();
    forgetDeleted(session);
    return answer(session, note, "Locked the passage in " + quotedTitle(note) + ".");
}

/// A locked passage of a note, and what the passphrase made of it.
struct Opened {
    std::size_t index = 0;
    std::variant<SecretBytes, SelectiveEncryptionError> result;

    const SecretBytes* text() const { return std::get_if<SecretBytes>(&result); }
    const SelectiveEncryptionError* error() const {
        return std::get_if<SelectiveEncryptionError>(&result);
    }
};

Opened open(std::size_t index, const std::string& blob, const SecretBytes& passphrase) {
    try {
        return {index, SelectiveEncryption::decrypt(blob, passphrase.text())};
    } catch (const SelectiveEncryptionError& error) {
        return {index, error};
    }
}

/// The passages that are meant. Throws when the passphrase opens none of them.
std::vector<Opened> openPassages(
    const CDNote& note, const Arguments& arguments, const SecretBytes& passphrase) {
    const auto blobs = PassageService::blobs(note);
    if (blobs.empty()) {
        throw CommandError::badInput("There is no locked passage in " + quotedTitle(note) + ".");
    }
    const auto number =
        arguments.integer("number", 1, static_cast<std::int64_t>(blobs.size())).value_or(0);
    std::vector<Opened> passages;
    bool isAnyOpen = false;
    for (std::size_t i = 0; i < blobs.size(); ++i) {
        if (number != 0 && std::cmp_not_equal(number, i + 1)) continue;
        passages.push_back(open(i, blobs[i], passphrase));
        isAnyOpen = isAnyOpen || passages.back().text() != nullptr;
    }
    if (!isAnyOpen) throw *passages.front().error();
    return passages;
}

void showAsJSON(Session& session, const std::vector<Opened>& passages) {
    boost::json::array array;
    for (const Opened& passage : passages) {
        boost::json::object object{{"number", passage.index + 1}};
        if (passage.text() != nullptr) object["text"] = passage.text()->text();
        if (passage.error() != nullptr) object["error"] = passage.error()->what();
        array.push_back(std::move(object));
    }
    session.output().json(array);
}

void remarkFailures(Session& session, const std::vector<Opened>& passages) {
    for (const Opened& passage : passages) {
        if (passage.error() == nullptr) continue;
        session.remark(
            "Passage " + std::to_string(passage.index + 1) + ": " + passage.error()->what());
    }
}

ExitStatus showPassages(Session& session, const std::vector<Opened>& passages) {
    if (session.output().isJSON()) {
        showAsJSON(session, passages);
        return ExitStatus::done;
    }
    bool isFirst = true;
    for (const Opened& passage : passages) {
        if (passage.text() == nullptr) continue;
        if (!isFirst) session.output().line("");
        session.output().text(passage.text()->text());
        isFirst = false;
    }
    remarkFailures(session, passages);
    return ExitStatus::done;
}

ExitStatus removeLocks(Session& session, CDNote& note, const std::vector<Opened>& passages) {
    session.remark(
        "Removing encryption permanently replaces this block with plain, editable text. This "
        "cannot be undone.");
    if (session.environment().inputIsTerminal
        && askOnTerminal(session, "Remove it?", Answer::no) == Answer::no) {
        session.remark("Nothing was changed.");
        return ExitStatus::failed;
    }
    std::size_t count = 0;
    // From the last to the first: the places of those before stay what they are.
    for (std::size_t i = passages.size(); i-- > 0;) {
        const SecretBytes* const text = passages[i].text();
        if (text == nullptr) continue;
        passagesOf(session).removeLock(session.context(), note, passages[i].index, text->text());
        ++count;
    }
    session.context().save();
    remarkFailures(session, passages);
    return answer(
        session,
        note,
        "Removed the encryption of " + counted(count, "passage") + " in " + quotedTitle(note)
            + ".");
}

ExitStatus unlockPassages(Session& session, const Arguments& arguments) {
    if (!arguments.has("remove")) session.onlyRead();
    const SecretBytes passphrase = passphraseFrom(session, arguments, PassphraseUse::isKnown);
    CDNote& note = resolveNote(session, arguments.word(0));
    const auto passages = openPassages(note, arguments, passphrase);
    return arguments.has("remove") ? removeLocks(session, note, passages)
                                   : showPassages(session, passages);
}

}  // namespace

std::vector<Command> lockCommands() {
    return {
        {.path = "note lock",
         .summary = "Locks a passage of a note with a passphrase",
         .access = Access::writes,
         .arguments = {{.name = "NOTE"}},
         .options =
             {{.name = "text",
               .value = "PASSAGE",
               .summary = "The text to lock, wherever it stands in the note; - reads standard "
                          "input"},
              passphraseOption(),
              {.name = "keep-versions",
               .summary = "Keeps earlier versions of the note that contain the text"}},
         .details = "The passphrase is asked for on a terminal, else it is the first line of "
                    "standard input. It is kept nowhere: without it the text is lost. Earlier "
                    "versions of the note that contain the text are removed, and so is the file "
                    "it was imported from.",
         .example = "tesserine note lock Plan --text 'The key is under the mat'",
         .run = lockPassage},
        {.path = "note unlock",
         .summary = "Shows the locked passages of a note",
         .access = Access::writes,
         .arguments = {{.name = "NOTE"}},
         .options =
             {{.name = "remove", .summary = "Puts plain text in their place for good"},
              {.name = "number", .value = "N", .summary = "Only the one at this place"},
              passphraseOption()},
         .details = "The passphrase is asked for on a terminal, else it is the first line of "
                    "standard input.",
         .example = "tesserine note unlock Plan",
         .run = unlockPassages}};
}

}  // namespace tesserine::cli
