#pragma once

#include "base/UserError.h"

#include <cmath>
#include <optional>
#include <string>

namespace tesserine {

/// Why the assistant gave no answer.
class AIError final : public UserError {
public:
    enum class Kind {
        rateLimited,
        server,
        invalidResponse,
        notConfigured,
        disabled,
        offline,
        requestTooLarge,
        unauthorized,
        accountUnauthorized,
        cancelled,
    };

    /// `delay` in seconds, as the service asked for it.
    static AIError rateLimited(std::optional<double> delay) {
        if (!delay) {
            return {Kind::rateLimited, "The AI service is busy right now. Try again shortly."};
        }
        // Half a second goes up, which printing would not do.
        const auto seconds = std::to_string(std::llround(*delay));
        return {
            Kind::rateLimited,
            "The AI service is busy. Try again in about " + seconds + " seconds."};
    }
    static AIError server(int status, const std::string& message) {
        return {
            Kind::server,
            "The AI service returned an error (" + std::to_string(status) + "). " + message};
    }
    static AIError invalidResponse(const std::string& detail) {
        return {
            Kind::invalidResponse, "Tesserine could not read the AI service's reply. " + detail};
    }
    static AIError notConfigured() {
        return {
            Kind::notConfigured,
            "Ask Tesserine is not set up yet. Add an xAI API key in Settings, or turn on the "
            "Tesserine relay."};
    }
    static AIError disabled() {
        return {
            Kind::disabled,
            "AI features are switched off. You can turn them on in Settings — your notes stay on "
            "your devices until you do."};
    }
    static AIError offline() {
        return {
            Kind::offline,
            "Tesserine could not reach the AI service. Your notes, search, and everything else "
            "still work offline."};
    }
    static AIError requestTooLarge() {
        return {
            Kind::requestTooLarge,
            "That question needed more context than the AI service accepts. Try narrowing it to a "
            "notebook or a date range."};
    }
    static AIError unauthorized() {
        return {
            Kind::unauthorized,
            "The AI service rejected the API key. Check it in Settings — nothing was sent from "
            "your notes."};
    }
    static AIError accountUnauthorized() {
        return {
            Kind::accountUnauthorized,
            "Tesserine could not verify your account with the AI relay. Try signing out and back "
            "in — nothing was sent from your notes."};
    }
    static AIError cancelled() { return {Kind::cancelled, "The request was cancelled."}; }

    Kind kind() const noexcept { return kind_; }

private:
    AIError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

}  // namespace tesserine
