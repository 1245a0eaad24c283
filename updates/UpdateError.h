#pragma once

#include "base/UserError.h"

#include <cstdint>
#include <string>
#include <utility>

namespace tesserine {

/// Why there is no update, or none that can be trusted.
class UpdateError final : public UserError {
public:
    enum class Kind {
        server,
        malformed,
        insecureTransport,
        untrustedHost,
        digestMismatch,
        wrongLength,
        cannotSave,
        offline,
        cancelled,
    };

    static UpdateError server(int status) {
        return {
            Kind::server,
            std::to_string(status),
            "The update server returned an error (" + std::to_string(status)
                + "). Try again later."};
    }
    static UpdateError malformed(const std::string& detail) {
        return {
            Kind::malformed,
            detail,
            "The update information could not be read (" + detail
                + "). Tesserine has left things as they are."};
    }
    static UpdateError insecureTransport(const std::string& address) {
        return {
            Kind::insecureTransport,
            address,
            "The update information pointed at an insecure address (" + address
                + ") and was ignored."};
    }
    static UpdateError untrustedHost(const std::string& host) {
        return {
            Kind::untrustedHost,
            host,
            "The update information pointed at " + host
                + ", which is not a Tesserine address. Nothing was downloaded."};
    }
    /// `site` is the product's web site.
    static UpdateError digestMismatch(const std::string& site) {
        return {
            Kind::digestMismatch,
            {},
            "The downloaded file does not match what Tesserine was expecting, so it has been "
            "discarded. You can download Tesserine from "
                + site + " instead."};
    }
    /// Both in bytes.
    static UpdateError wrongLength(std::int64_t actual, std::int64_t expected) {
        return {
            Kind::wrongLength,
            {},
            "The download was " + std::to_string(actual) + " bytes, but " + std::to_string(expected)
                + " bytes were expected, so it has been discarded."};
    }
    static UpdateError cannotSave(const std::string& place, const std::string& site) {
        return {
            Kind::cannotSave,
            place,
            "Tesserine downloaded the update and checked it, then could not save it to " + place
                + ". Nothing is wrong with the update or with your notes. Try again, or download "
                  "Tesserine from "
                + site + "."};
    }
    static UpdateError offline() {
        return {
            Kind::offline,
            {},
            "Tesserine could not reach the update server. This does not affect your notes; try "
            "again when you are back online."};
    }
    static UpdateError cancelled() {
        return {Kind::cancelled, {}, "The update check was cancelled."};
    }

    Kind kind() const noexcept { return kind_; }
    /// What the case carries: the detail, the address, the host, the status or the place.
    const std::string& detail() const noexcept { return detail_; }

private:
    UpdateError(Kind kind, std::string detail, const std::string& sentence)
        : UserError(sentence), kind_(kind), detail_(std::move(detail)) {}
    Kind kind_;
    std::string detail_;
};

}  // namespace tesserine
