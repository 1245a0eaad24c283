#include "tools/inspect/Operations.h"
#include "updates/AppVersion.h"
#include "updates/UpdateError.h"
#include "updates/UpdateFeed.h"

#include <optional>
#include <string>

namespace tesserine::inspect {
namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

AppVersion versionOf(const object& input, std::string_view key) {
    auto version = AppVersion::parse(text(input, key));
    if (!version) throw InputError("“" + std::string(key) + "” is no version");
    return *std::move(version);
}

VersionStamp stampOf(const object& input, std::string_view key) {
    const value& found = member(input, key);
    if (!found.is_object()) throw InputError("“" + std::string(key) + "” is no stamp");
    return {versionOf(found.get_object(), "version"), optionalInteger(found.get_object(), "build")};
}

value versionParse(const object& input) {
    const auto version = AppVersion::parse(text(input, "text"));
    if (!version) return nullptr;
    array prerelease;
    for (const auto& identifier : version->prerelease) {
        std::visit([&prerelease](const auto& held) { prerelease.emplace_back(held); }, identifier);
    }
    return object{
        {"components", array(version->components.begin(), version->components.end())},
        {"prerelease", std::move(prerelease)},
        {"text", version->text}};
}

value versionCompare(const object& input) {
    const auto order = versionOf(input, "a") <=> versionOf(input, "b");
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

value stampCompare(const object& input) {
    const VersionStamp a = stampOf(input, "a");
    const VersionStamp b = stampOf(input, "b");
    return b.isNewerThan(a) ? -1 : a.isNewerThan(b) ? 1 : 0;
}

const char* nameOf(UpdateError::Kind kind) {
    switch (kind) {
    case UpdateError::Kind::server: return "server";
    case UpdateError::Kind::malformed: return "malformed";
    case UpdateError::Kind::insecureTransport: return "insecureTransport";
    case UpdateError::Kind::untrustedHost: return "untrustedHost";
    case UpdateError::Kind::digestMismatch: return "digestMismatch";
    case UpdateError::Kind::wrongLength: return "wrongLength";
    case UpdateError::Kind::cannotSave: return "cannotSave";
    case UpdateError::Kind::offline: return "offline";
    case UpdateError::Kind::cancelled: return "cancelled";
    }
    return "";
}

value feedRead(const object& input) {
    UpdateHosts hosts{.domain = text(input, "domain"), .storeHosts = {}};
    for (const value& host : elements(input, "storeHosts")) {
        if (!host.is_string()) throw InputError("“storeHosts” holds no texts");
        hosts.storeHosts.emplace_back(host.get_string());
    }
    try {
        const Release release = feed::read(text(input, "feed"), hosts);
        value build = nullptr;
        if (release.stamp.build) build = *release.stamp.build;
        return object{{"version", release.stamp.version.text}, {"build", std::move(build)}};
    } catch (const UpdateError& error) {
        return object{{"error", nameOf(error.kind())}, {"detail", error.detail()}};
    }
}

}  // namespace

void addUpdateOperations(Operations& operations) {
    operations.add("feed.read", feedRead);
    operations.add("stamp.compare", stampCompare);
    operations.add("version.compare", versionCompare);
    operations.add("version.parse", versionParse);
}

}  // namespace tesserine::inspect
