#include "core/export/ExportVerifier.h"

#include "base/Digest.h"
#include "base/Files.h"
#include "base/JSON.h"
#include "base/PercentEncoding.h"
#include "core/body/HTMLNode.h"
#include "core/export/ExportFolder.h"
#include "core/export/ExportTypes.h"

#include <optional>
#include <set>
#include <string_view>

namespace tesserine {
namespace {

namespace fs = std::filesystem;
using boost::json::object;
using boost::json::value;

constexpr std::uint64_t largestManifest = 4'000'000'000;
constexpr std::uint64_t largestPage = 200'000'000;

std::optional<std::string> textAt(const object& record, std::string_view key) {
    const value* const found = record.if_contains({key.data(), key.size()});
    if (found == nullptr || !found->is_string()) return std::nullopt;
    return std::string(found->get_string());
}

std::optional<std::int64_t> numberAt(const object& record, std::string_view key) {
    const value* const found = record.if_contains({key.data(), key.size()});
    if (found == nullptr || !found->is_int64()) return std::nullopt;
    return found->get_int64();
}

/// The objects of a list, those that are none left out.
std::vector<const object*> objectsAt(const object& record, std::string_view key) {
    std::vector<const object*> objects;
    const value* const found = record.if_contains({key.data(), key.size()});
    if (found == nullptr || !found->is_array()) return objects;
    for (const value& entry : found->get_array()) {
        if (entry.is_object()) objects.push_back(&entry.get_object());
    }
    return objects;
}

/// Whether an address names a file beside the page it stands on.
bool isRelative(std::string_view address) {
    const std::size_t end = std::min(address.find_first_of("/?#"), address.size());
    return !address.empty() && address[0] != '#' && address[0] != '/'
           && address.substr(0, end).find(':') == std::string_view::npos;
}

/// Collects the relative addresses of a page.
struct AddressCollector {
    void enter(const HTMLNode& node) {
        for (const std::string_view name : {"href", "src"}) {
            const auto address = node.attribute(name);
            if (address && isRelative(*address)) addresses.insert(percentDecoded(*address));
        }
    }
    void leave(const HTMLNode& /*node*/) {}

    std::set<std::string> addresses;
};

/// One folder under examination.
class Verifier {
public:
    Verifier(const fs::path& folder, const std::stop_token& stop) : folder_(folder), stop_(stop) {}

    ExportVerification run();

private:
    void checkNote(const object& note);
    void checkAttachment(const object& attachment);
    void checkFile(const std::string& path);
    void checkPage(const std::string& path);
    void checkCounts(const object& manifest);
    void checkDigests();
    void checkDigest(const std::string& path, std::string_view digest);
    void compare(const object& counts, std::string_view key, std::int64_t found);
    std::optional<fs::path> inside(const std::string& path);
    void report(const std::string& path, const std::string& problem) {
        result_.problems.push_back("“" + path + "” " + problem);
    }

    const fs::path& folder_;
    const std::stop_token& stop_;
    ExportVerification result_;
    std::set<std::string> unlike_;  // files that are missing or known not to be what they were
    std::int64_t attachments_ = 0;
    std::int64_t attachmentBytes_ = 0;
    std::int64_t trashed_ = 0;
};

ExportVerification Verifier::run() {
    const Bytes bytes = files::read(folder_ / "manifest.json", largestManifest);
    value parsed;
    try {
        parsed = json::parse(textOf(bytes), {.byteCount = bytes.size()});
    } catch (const json::JSONError& error) {
        report("manifest.json", std::string("cannot be read: ") + error.what() + ".");
        return std::move(result_);
    }
    if (!parsed.is_object()
        || numberAt(parsed.get_object(), "formatVersion") != exportFormatVersion) {
        report("manifest.json", "is of another format.");
        return std::move(result_);
    }
    const object& manifest = parsed.get_object();
    for (const object* const note : objectsAt(manifest, "notes")) {
        if (stop_.stop_requested()) {
            result_.wasStopped = true;
            return std::move(result_);
        }
        checkNote(*note);
    }
    checkPage("index.html");
    checkFile("README.txt");
    checkCounts(manifest);
    checkDigests();
    return std::move(result_);
}

void Verifier::checkNote(const object& note) {
    ++result_.notes;
    if (note.contains("trashedAt")) ++trashed_;
    checkPage(textAt(note, "htmlPath").value_or(""));
    for (const std::string_view key : {"markdownPath", "originalSourcePath"}) {
        if (const auto path = textAt(note, key)) checkFile(*path);
    }
    for (const object* const attachment : objectsAt(note, "attachments")) {
        checkAttachment(*attachment);
    }
}

void Verifier::checkAttachment(const object& attachment) {
    const auto path = textAt(attachment, "path");
    if (!path) return;
    ++attachments_;
    const auto file = inside(*path);
    if (!file) return;
    checkFile(*path);
    try {
        const auto size = static_cast<std::int64_t>(fs::file_size(*file));
        attachmentBytes_ += size;
        if (size != numberAt(attachment, "byteCount").value_or(size)) {
            unlike_.insert(*path);
            report(*path, "has another size than the manifest says.");
        } else if (sha256HexOfFile(*file) != textAt(attachment, "sha256").value_or("")) {
            unlike_.insert(*path);
            report(*path, "does not hold the bytes that the manifest says.");
        }
    } catch (const FileError& error) {
        result_.problems.emplace_back(error.what());
    } catch (const fs::filesystem_error&) {
        return;  // it is missing, as was reported
    }
}

void Verifier::checkFile(const std::string& path) {
    const auto file = inside(path);
    if (!file) return;
    std::error_code error;
    const auto size = fs::file_size(*file, error);
    if (error) {
        unlike_.insert(path);
        return report(path, "is missing.");
    }
    ++result_.files;
    result_.bytes += size;
}

void Verifier::checkPage(const std::string& path) {
    const auto file = inside(path);
    if (!file) return;
    Bytes bytes;
    try {
        bytes = files::read(*file, largestPage);
    } catch (const FileError& error) {
        unlike_.insert(path);
        result_.problems.emplace_back(error.what());
        return;
    }
    ++result_.files;
    result_.bytes += bytes.size();
    AddressCollector collector;
    const HTMLDocument document = HTMLDocument::parse(textOf(bytes));
    walk(document.root(), collector);
    for (const std::string& address : collector.addresses) {
        const auto target = (fs::path(path).parent_path() / address).lexically_normal().string();
        const auto found = inside(target);
        std::error_code error;
        if (found && !fs::exists(*found, error)) {
            report(path, "leads to “" + target + "”, which is missing.");
        }
    }
}

void Verifier::checkCounts(const object& manifest) {
    const value* const found = manifest.if_contains("counts");
    if (found == nullptr || !found->is_object()) return report("manifest.json", "has no counts.");
    const object& counts = found->get_object();
    compare(counts, "notes", static_cast<std::int64_t>(result_.notes));
    compare(counts, "trashedNotes", trashed_);
    compare(counts, "attachments", attachments_);
    compare(counts, "attachmentBytes", attachmentBytes_);
    for (const std::string_view key : {"notebooks", "tags", "tasks", "projects", "taskTemplates"}) {
        compare(counts, key, static_cast<std::int64_t>(objectsAt(manifest, key).size()));
    }
}

/// The digests of all files but the manifest; older exports have no list of them.
void Verifier::checkDigests() {
    const fs::path list = folder_ / ExportFolder::checksumsName;
    std::error_code error;
    if (!fs::exists(list, error)) return;
    const Bytes bytes = files::read(list, largestManifest, files::Links::refuse);
    std::string_view rest = textOf(bytes);
    constexpr std::size_t digestLength = 64;
    constexpr std::string_view gap = "  ";
    while (!rest.empty() && !stop_.stop_requested()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const bool isEntry =
            line.size() > digestLength + gap.size() && line.substr(digestLength, gap.size()) == gap;
        if (!isEntry) {
            report(ExportFolder::checksumsName, "holds a line that names no file.");
            return;
        }
        const std::string path(line.substr(digestLength + gap.size()));
        if (!unlike_.contains(path)) checkDigest(path, line.substr(0, digestLength));
    }
}

void Verifier::checkDigest(const std::string& path, std::string_view digest) {
    const auto file = inside(path);
    if (!file) return;
    try {
        if (sha256HexOfFile(*file) == digest) return;
        report(path, "does not hold the bytes that were exported.");
    } catch (const FileError& error) {
        result_.problems.emplace_back(error.what());
    }
}

void Verifier::compare(const object& counts, std::string_view key, std::int64_t found) {
    const auto told = numberAt(counts, key);
    if (told == found) return;
    report(
        "manifest.json",
        "counts " + std::to_string(told.value_or(0)) + " as " + std::string(key)
            + " where there are " + std::to_string(found) + ".");
}

/// The file of a path in the manifest; none, and a problem, for one that leads elsewhere.
std::optional<fs::path> Verifier::inside(const std::string& path) {
    const fs::path normal = fs::path(path).lexically_normal();
    const bool isInside = !path.empty() && normal.is_relative() && *normal.begin() != "..";
    if (isInside && !fs::is_symlink(folder_ / normal)) return folder_ / normal;
    report(path, "is no file of this folder.");
    return std::nullopt;
}

}  // namespace

ExportVerification verifyExport(const fs::path& folder, const std::stop_token& stop) {
    return Verifier(folder, stop).run();
}

}  // namespace tesserine
