#include "updates/UpdateClient.h"

#include "base/Digest.h"
#include "base/Encoding.h"
#include "base/Files.h"
#include "base/OperationCancelled.h"
#include "base/PercentEncoding.h"
#include "base/Text.h"
#include "updates/UpdateError.h"

#include <fstream>
#include <system_error>
#include <utility>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience{60};

/// A file that is gone unless it was kept.
class PartialFile {
public:
    explicit PartialFile(fs::path path) : path_(std::move(path)) {
        files::writeNew(path_, {});
        stream_.open(path_, std::ios::binary | std::ios::app);
    }
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;
    ~PartialFile() {
        stream_.close();
        std::error_code ignored;
        fs::remove(path_, ignored);
    }

    void write(std::string_view piece) {
        stream_.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        require();
    }
    /// Gives the file its name beside it; what is there already stays.
    fs::path keepAs(const std::string& name) {
        stream_.flush();
        require();
        files::syncFile(path_);
        const fs::path wanted = path_.parent_path() / name;
        fs::path free = wanted;
        for (int number = 2; fs::exists(fs::symlink_status(free)); ++number) {
            const std::string numbered = wanted.stem().string() + " " + std::to_string(number);
            free.replace_filename(numbered + wanted.extension().string());
        }
        fs::rename(path_, free);
        return free;
    }

private:
    void require() const {
        if (!stream_) throw FileError(FileError::Kind::other, "The file could not be written.");
    }

    fs::path path_;
    std::ofstream stream_;
};

std::string nameIn(const WebAddress& address) {
    const std::string last = address.path.substr(address.path.rfind('/') + 1);
    return files::safeName(text::sanitized(percentDecoded(last)));
}

bool isRedirect(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

}  // namespace

HTTPReply UpdateClient::get(
    const WebAddress& address, HTTPRequest request, const std::stop_token& stop) {
    WebAddress place = address;
    request.inactivity = patience;
    for (int redirects = 0; redirects <= mostRedirects; ++redirects) {
        setting_.hosts.requireOwn(place);
        request.url = place.text;
        HTTPReply reply = setting_.session.send(request, stop);
        if (!isRedirect(reply.status)) {
            if (reply.status < 200 || reply.status > 299) throw UpdateError::server(reply.status);
            return reply;
        }
        const std::string* const location = reply.header("Location");
        auto next = place.resolved(location != nullptr ? *location : "");
        if (!next) break;
        place = *std::move(next);
    }
    throw UpdateError::malformed("it was redirected too often, or to nowhere");
}

Release UpdateClient::fetch(const std::stop_token& stop) {
    const auto address = WebAddress::parse(setting_.feedURL);
    if (!address) throw UpdateError::malformed("the feed has no address");
    try {
        const HTTPReply reply = get(*address, {.replyLimit = feed::largestSize}, stop);
        return feed::read(reply.body, setting_.hosts);
    } catch (const OperationCancelled&) {
        throw UpdateError::cancelled();
    } catch (const HTTPError& error) {
        if (error.kind() == HTTPError::Kind::tooLarge) {
            throw UpdateError::malformed("it is longer than Tesserine reads");
        }
        throw UpdateError::offline();
    }
}

std::filesystem::path UpdateClient::download(
    const Release::Download& announced,
    const std::filesystem::path& folder,
    const Progress& progress,
    const std::stop_token& stop) {
    try {
        const std::string name = nameIn(announced.address);
        PartialFile file(folder / ("." + name + ".part"));
        SHA256 digest;
        std::int64_t received = 0;
        const auto take = [&](std::string_view piece) {
            received += static_cast<std::int64_t>(piece.size());
            if (received > announced.length) {
                throw UpdateError::wrongLength(received, announced.length);
            }
            digest.update(bytesOf(piece));
            file.write(piece);
            if (progress) progress(received);
        };
        get(announced.address,
            {.replyLimit = static_cast<std::size_t>(announced.length) + (std::size_t{1} << 20),
             .sink = take},
            stop);
        if (received != announced.length) {
            throw UpdateError::wrongLength(received, announced.length);
        }
        if (hex(digest.finish()) != announced.sha256) {
            throw UpdateError::digestMismatch(setting_.site);
        }
        return file.keepAs(name);
    } catch (const OperationCancelled&) {
        throw UpdateError::cancelled();
    } catch (const HTTPError& error) {
        throw UpdateError::offline();
    } catch (const FileError& error) {
        throw UpdateError::cannotSave(folder.string(), setting_.site);
    } catch (const fs::filesystem_error& error) {
        throw UpdateError::cannotSave(folder.string(), setting_.site);
    }
}

}  // namespace tesserine
