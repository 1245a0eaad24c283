#pragma once

#include "base/HTTP.h"

#include <chrono>
#include <stdexcept>
#include <string>

namespace tesserine::server {

/// What is wrong with a request, as its sender is told.
class Refusal final : public std::runtime_error {
public:
    Refusal(int status, const std::string& message) : Refusal(status, message, {}) {}
    static Refusal unreadable() { return {400, "The request could not be read."}; }
    static Refusal tooMany(std::chrono::seconds wait) {
        return {
            429,
            "Too many requests. Wait a moment.",
            {{"Retry-After", std::to_string(wait.count())}}};
    }

    HTTPReply reply() const;

private:
    Refusal(int status, const std::string& message, HTTPHeaders headers)
        : std::runtime_error(message), status_(status), headers_(std::move(headers)) {}

    int status_;
    HTTPHeaders headers_;
};

}  // namespace tesserine::server
