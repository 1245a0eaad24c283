#include "base/Files.h"
#include "base/Product.h"
#include "base/Text.h"
#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Session.h"
#include "updates/ReleaseNotes.h"
#include "updates/UpdateChecks.h"

#include <boost/json/object.hpp>

#include <optional>

namespace tesserine::cli {

namespace {

UpdateSource sourceOf(Session& session) {
    return UpdateSource::ofThisBuild(session.environment().programFile);
}

UpdateClient clientOf(Session& session) {
    if (!product::hasService) {
        throw CommandError::notSetUp(
            "This build of Tesserine has no service of its own, so there is nowhere to look for "
            "updates.");
    }
    return sourceOf(session).client(session.environment().network());
}

std::optional<UpdateOffer> fetchedOffer(Session& session) {
    Preferences& preferences = session.preferences();
    auto offer = offerOf(clientOf(session).fetch(session.stop()), updates::situation(preferences));
    updates::noteCheck(preferences, session.now(), offer);
    return offer;
}

/// What a feed in a file offers.
std::optional<UpdateOffer> offerIn(Session& session, const std::filesystem::path& file) {
    const Bytes bytes = files::read(file, feed::largestSize);
    const std::string text = text::sanitized(std::string(textOf(bytes)));
    return offerOf(
        feed::read(text, sourceOf(session).hosts), updates::situation(session.preferences()));
}

boost::json::value addressOrNull(const std::optional<WebAddress>& address) {
    return address ? boost::json::value(address->text) : boost::json::value(nullptr);
}

boost::json::value offerJSON(const std::optional<UpdateOffer>& offer) {
    if (!offer) return {{"current", product::version}, {"offer", nullptr}};
    const Release& release = offer->release;
    boost::json::object shown{
        {"version", release.stamp.version.text},
        {"isRequired", offer->isRequired},
        {"releaseNotes", release.releaseNotes},
        {"releaseNotesURL", addressOrNull(release.releaseNotesAddress)},
        {"storeURL", addressOrNull(release.storeAddress)}};
    return {{"current", product::version}, {"offer", std::move(shown)}};
}

void showOffer(Session& session, const UpdateOffer& offer) {
    Output& output = session.output();
    const Release& release = offer.release;
    output.line(
        "Tesserine " + oneLine(release.stamp.version.text) + " is available; this is "
        + std::string(product::version) + ".");
    if (offer.isRequired) output.line("This version is no longer supported.");
    for (const ReleaseNotes::Block& block : ReleaseNotes::parse(release.releaseNotes).blocks) {
        const bool isBullet = block.kind == ReleaseNotes::Block::Kind::bullet;
        output.line((isBullet ? "  • " : "") + oneLine(block.text));
    }
    if (release.releaseNotesAddress) {
        output.line("Full release notes: " + release.releaseNotesAddress->text);
    }
}

ExitStatus check(Session& session, const Arguments& arguments) {
    const auto file = arguments.path("feed");
    const auto offer = file ? offerIn(session, *file) : fetchedOffer(session);
    if (session.output().isJSON()) {
        session.output().json(offerJSON(offer));
    } else if (offer) {
        showOffer(session, *offer);
    } else {
        session.output().line(
            "Tesserine " + std::string(product::version) + " is the newest version.");
    }
    return ExitStatus::done;
}

std::filesystem::path downloadsFolder(Session& session, const Arguments& arguments) {
    if (const auto folder = arguments.path("to")) return *folder;
    return session.environment().home / "Downloads";
}

ExitStatus download(Session& session, const Arguments& arguments) {
    UpdateClient client = clientOf(session);
    if (sourceOf(session).isOwnedByPackages()) {
        throw CommandError::notSetUp(
            "The system's package manager installed this program and updates it.");
    }
    const auto offer = fetchedOffer(session);
    if (!offer) {
        session.output().line(
            "Tesserine " + std::string(product::version) + " is the newest version.");
        return ExitStatus::done;
    }
    if (!offer->release.download) {
        throw CommandError::notSetUp("This release has no file to download.");
    }
    const auto file = client.download(
        *offer->release.download, downloadsFolder(session, arguments), {}, session.stop());
    if (session.output().isJSON()) {
        session.output().json({{"file", file.string()}});
    } else {
        session.output().line("Downloaded and checked “" + file.string() + "”. Nothing was run.");
    }
    return ExitStatus::done;
}

}  // namespace

std::vector<Command> updateCommands() {
    return {
        {.path = "update check",
         .summary = "Tells whether there is a newer version",
         .access = Access::none,
         .options =
             {{.name = "feed",
               .value = "FILE",
               .summary = "Read the announcement from a file; touches no network",
               .completion = Completion::file}},
         .example = "tesserine update check",
         .run = check},
        {.path = "update download",
         .summary = "Downloads a newer version and checks it; runs nothing",
         .access = Access::none,
         .options =
             {{.name = "to",
               .value = "DIR",
               .summary = "The folder it goes to (Downloads unless said)",
               .completion = Completion::folder}},
         .example = "tesserine update download",
         .run = download}};
}

}  // namespace tesserine::cli
