#pragma once

#include <string_view>

/// What the product is called, and where its services are. The version and the domain come from the
/// build (`TESSERINE_DOMAIN` in CMake); everything made from the domain is made here.
namespace tesserine::product {

inline constexpr std::string_view name = "Tesserine";
inline constexpr std::string_view version = TESSERINE_VERSION;
/// Of links into the library, as in "tesserine://note/…".
inline constexpr std::string_view urlScheme = "tesserine";

/// Also the suffix of the identifiers of exported calendar entries.
inline constexpr std::string_view domain = TESSERINE_DOMAIN;
/// Whether this build has a service of its own. Without one nothing may touch the network for
/// synchronising, relaying or checking for updates: what the user sees is "not set up".
inline constexpr bool hasService = domain != "tesserine.example";

inline constexpr std::string_view serviceBaseURL = "https://" TESSERINE_DOMAIN;
/// The environment variable that replaces `serviceBaseURL` in development and tests.
inline constexpr const char* serviceURLVariable = "TESSERINE_SERVICE_URL";
/// Where updates are announced; nothing replaces it.
inline constexpr std::string_view updateFeedURL = "https://" TESSERINE_DOMAIN "/appcast.json";
/// Named in exported files.
inline constexpr std::string_view exportFormatURL =
    "https://" TESSERINE_DOMAIN "/docs/export-format";

inline constexpr std::string_view applicationGroup = "group.app.tesserine";
/// Under which secrets are kept: the account's tokens, the assistant's key.
inline constexpr std::string_view tokenSecretService = "app.tesserine.tokens";
inline constexpr std::string_view assistantSecretService = "app.tesserine.ai";

/// The language model provider asked with the user's own key.
inline constexpr std::string_view modelProviderBaseURL = "https://api.x.ai/v1";

}  // namespace tesserine::product
