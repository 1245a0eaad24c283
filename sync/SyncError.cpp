#include "sync/SyncError.h"

#include <utility>

namespace tesserine {
namespace {

std::string sentenceOf(const ServerProblem& problem) {
    const bool saysNothing = problem.message.starts_with("The server returned an error");
    if (problem.status == storageIsFull && saysNothing) {
        return "Your Tesserine attachment storage is full. Delete some attachments in Settings > "
               "Storage, then try again. Nothing already uploaded is lost.";
    }
    return problem.message;
}

}  // namespace

SyncError SyncError::server(ServerProblem problem) {
    const std::string sentence = sentenceOf(problem);
    return {Kind::server, sentence, std::move(problem)};
}

SyncError SyncError::malformed(const std::string& description) {
    return {
        Kind::malformed,
        "The server sent something Tesserine could not read (" + description + ")."};
}

SyncError SyncError::offline() {
    return {
        Kind::offline,
        "Tesserine could not reach the server. Your notes are safe on this device and will sync "
        "when you are back online."};
}

SyncError SyncError::signedOut() {
    return {Kind::signedOut, "Your Tesserine session has ended. Sign in again to keep syncing."};
}

SyncError SyncError::notInvited() {
    return {Kind::notInvited, "That address is not on the Tesserine beta list yet."};
}

SyncError SyncError::cancelled() { return {Kind::cancelled, "Sign-in was cancelled."}; }

SyncError SyncError::keychainUnavailable() {
    return {
        Kind::keychainUnavailable,
        "Tesserine could not reach its secure storage on this device. Your session is still there; "
        "this should clear up on its own."};
}

bool SyncError::isRetryable() const noexcept {
    if (kind_ == Kind::offline) return true;
    if (kind_ != Kind::server) return false;
    switch (problem_.status) {
    case 429:
    case 502:
    case 503:
    case 504: return true;
    case 500: return problem_.mayRepeatAfter500;
    default: return false;
    }
}

bool SyncError::isTransient() const noexcept {
    if (kind_ == Kind::server) return problem_.status == 429 || problem_.status >= 500;
    return kind_ == Kind::offline || kind_ == Kind::keychainUnavailable;
}

}  // namespace tesserine
