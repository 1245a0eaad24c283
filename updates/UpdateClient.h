#pragma once

#include "base/HTTP.h"
#include "updates/UpdateFeed.h"
#include "updates/UpdateHosts.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>

namespace tesserine {

/// Fetches the update feed and the file it names; whatever leads elsewhere, or is not what was
/// announced, is discarded and said. Nothing is ever run. Safe from any thread.
class UpdateClient {
public:
    /// Redirects that one request may take, each of which passes the trust rule.
    static constexpr int mostRedirects = 5;

    struct Setting {
        HTTPTransport& session;
        UpdateHosts hosts;
        std::string feedURL;
        std::string site;  ///< the product's web site, for sentences
    };
    explicit UpdateClient(Setting setting) : setting_(std::move(setting)) {}

    /// Throws `UpdateError`.
    Release fetch(const std::stop_token& stop = {});

    /// Bytes so far, of the announced length.
    using Progress = std::function<void(std::int64_t received)>;
    /// Puts the file into `folder`, made where there is none, under the last part of its address,
    /// with a number when that name is taken, and returns where it is. Only a whole file with the
    /// right digest gets there. Throws `UpdateError`.
    std::filesystem::path download(
        const Release::Download& announced,
        const std::filesystem::path& folder,
        const Progress& progress = {},
        const std::stop_token& stop = {});

private:
    HTTPReply get(const WebAddress& address, HTTPRequest request, const std::stop_token& stop);

    Setting setting_;
};

}  // namespace tesserine
