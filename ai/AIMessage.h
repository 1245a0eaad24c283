#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// One turn of a conversation.
struct AIMessage {
    enum class Role { user, assistant };
    Role role = Role::user;
    std::string content;
};

/// One call of a language model.
struct AIRequest {
    std::string instructions;         ///< the system prompt
    std::vector<AIMessage> messages;  ///< oldest first, ending with the user's turn
    std::int64_t maxOutputTokens = 0;
    double temperature = 0.2;
    bool enableWebSearch = false;
    std::string model;
};

/// A web source that the model used.
struct WebCitation {
    std::string url;
    std::optional<std::string> title;

    friend bool operator==(const WebCitation&, const WebCitation&) = default;
};

struct AIUsage {
    std::int64_t inputTokens = 0;
    std::int64_t outputTokens = 0;

    friend bool operator==(const AIUsage&, const AIUsage&) = default;
};

/// What the model answered.
struct AIResponse {
    std::string text;  ///< not empty; to be shown as text, never as markup
    std::vector<WebCitation> webCitations;
    std::string model;  ///< that answered
    std::optional<AIUsage> usage;
};

}  // namespace tesserine
