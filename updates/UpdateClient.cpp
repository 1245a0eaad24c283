#include "updates/UpdateClient.h"

#include "base/Digest.h"
#include "base/Encoding.h"
#include "base/Files.h"
#include "base/OperationCancelled.h"
#include "base/PercentEncoding.h"
#include "base/Text.h"
#include "updates/PartialFile.h"
#include "updates/UpdateError.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace tesserine {
namespace {

constexpr std::chrono::seconds patience{60};

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
    std::error_code ignored;  // what is in its place is said when the file cannot be made
    std::filesystem::create_directories(folder, ignored);
    try {
        PartialFile file(folder, nameIn(announced.address));
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
        return file.keep();
    } catch (const OperationCancelled&) {
        throw UpdateError::cancelled();
    } catch (const HTTPError& error) {
        throw UpdateError::offline();
    } catch (const FileError& error) {
        throw UpdateError::cannotSave(folder.string(), setting_.site);
    }
}

}  // namespace tesserine
