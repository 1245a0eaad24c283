#include "updates/UpdateFeed.h"

#include "base/Encoding.h"
#include "base/JSON.h"
#include "base/Text.h"
#include "updates/UpdateError.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <cmath>

namespace tesserine::feed {
namespace {

using boost::json::object;
using boost::json::value;

constexpr std::string_view platformKey = "macos";
constexpr const char* platformName = "macOS";
/// The digits of a SHA-256 digest.
constexpr std::size_t digestLength = 64;

UpdateError unexpectedShape() { return UpdateError::malformed("not the expected JSON"); }

std::string ofPlatform(const std::string& what) { return what + " for " + platformName; }

/// Null when the key is absent or null.
const value* member(const object& in, std::string_view key) {
    const value* const found = in.if_contains({key.data(), key.size()});
    return found == nullptr || found->is_null() ? nullptr : found;
}

std::optional<std::string> text(const object& in, std::string_view key) {
    const value* const found = member(in, key);
    if (found == nullptr) return std::nullopt;
    if (!found->is_string()) throw unexpectedShape();
    return std::string(found->get_string());
}

/// A whole number; "5.0" is one.
std::optional<std::int64_t> integer(const object& in, std::string_view key) {
    const value* const found = member(in, key);
    if (found == nullptr) return std::nullopt;
    if (found->is_int64()) return found->get_int64();
    constexpr double exactlyKept = 9007199254740992.0;
    const bool isWhole = found->is_double()
                         && std::trunc(found->get_double()) == found->get_double()
                         && std::abs(found->get_double()) <= exactlyKept;
    if (!isWhole) throw unexpectedShape();
    return static_cast<std::int64_t>(found->get_double());
}

const object* section(const object& in, std::string_view key) {
    const value* const found = member(in, key);
    if (found == nullptr) return nullptr;
    if (!found->is_object()) throw unexpectedShape();
    return &found->get_object();
}

template <class Value>
Value required(std::optional<Value> value) {
    if (!value) throw unexpectedShape();
    return *std::move(value);
}

std::optional<AppVersion> version(const object& entry, const std::string& key) {
    const auto found = text(entry, key);
    if (!found) return std::nullopt;
    auto parsed = AppVersion::parse(*found);
    if (!parsed) throw UpdateError::malformed(ofPlatform(key + " \"" + *found + "\""));
    return parsed;
}

WebAddress address(const std::string& found, const std::string& name) {
    auto parsed = WebAddress::parse(found);
    if (!parsed) throw UpdateError::malformed(ofPlatform(name));
    return *std::move(parsed);
}

std::optional<WebAddress> optionalAddress(const object& entry, const std::string& key) {
    const auto found = text(entry, key);
    if (!found) return std::nullopt;
    return address(*found, key);
}

std::optional<std::int64_t> build(const object& entry) {
    const auto found = integer(entry, "build");
    if (found && *found < 0) {
        throw UpdateError::malformed(ofPlatform("build " + std::to_string(*found)));
    }
    return found;
}

std::optional<Release::Download> download(const object& entry) {
    const object* const found = section(entry, "download");
    if (found == nullptr) return std::nullopt;
    const auto url = required(text(*found, "url"));
    const auto digest = required(text(*found, "sha256"));
    const auto length = required(integer(*found, "length"));

    Release::Download result{.address = address(url, "download url")};
    if (length <= 0) throw UpdateError::malformed(ofPlatform("length"));
    if (digest.size() != digestLength || !fromHex(digest)) {
        throw UpdateError::malformed(ofPlatform("sha256") + " is not 64 hex characters");
    }
    result.length = length;
    result.sha256 = text::asciiLowercased(digest);
    return result;
}

object decoded(std::string_view text) {
    if (text.size() > largestSize) throw unexpectedShape();
    try {
        value parsed = json::parse(text);
        if (parsed.is_object()) return std::move(parsed.get_object());
    } catch (const json::JSONError&) {
        // The sentence names no place in the text, which nobody sees.
    }
    throw unexpectedShape();
}

Release checked(const object& entry) {
    required(text(entry, "version"));
    Release release{.stamp = {.version = *version(entry, "version"), .build = build(entry)}};
    release.minimumSystemVersion = version(entry, "minimumSystemVersion");
    release.minimumSupportedVersion = version(entry, "minimumSupportedVersion");
    release.download = download(entry);
    release.releaseNotesAddress = optionalAddress(entry, "releaseNotesURL");
    release.storeAddress = optionalAddress(entry, "storeURL");
    release.releaseNotes = text(entry, "releaseNotes").value_or("");
    if (const auto date = text(entry, "publishedAt")) {
        release.publishedAt = Instant::parseISO(*date);
    }
    return release;
}

}  // namespace

Release read(std::string_view text, const UpdateHosts& hosts) {
    const object all = decoded(text);
    integer(all, "feedVersion");
    const object* const platforms = section(all, "platforms");
    if (platforms == nullptr) throw unexpectedShape();
    const object* const entry = section(*platforms, platformKey);
    if (entry == nullptr) throw UpdateError::malformed("no platforms this build understands");

    Release release = checked(*entry);
    if (release.download) hosts.requireOwn(release.download->address);
    if (release.releaseNotesAddress) hosts.requireOwn(*release.releaseNotesAddress);
    if (release.storeAddress) hosts.requireStore(*release.storeAddress);
    return release;
}

}  // namespace tesserine::feed
