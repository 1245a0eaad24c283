#pragma once

#include "ai/AIMessage.h"
#include "ai/AIProvider.h"
#include "ai/AISettings.h"
#include "ai/SentLog.h"

#include <stop_token>
#include <string>

namespace tesserine {

/// The body of `request` to the letter, as the provider of these settings sends it. JSON.
std::string exactRequest(const AISettings& settings, const AIRequest& request);

/// Characters of everything in the request that was written by people: instructions and messages.
std::size_t characterCount(const AIRequest& request);

/// Sends the request once and waits for the answer, fit to be shown. `record` is kept first, with
/// its destination and size filled in. Throws `AIError`, and `FileError` when there can be no
/// record: nothing is sent then.
AIResponse dispatch(
    AIProvider& provider,
    const AIRequest& request,
    SentLog& log,
    SentRequest record,
    const std::stop_token& stop);

/// Without what a text widget or a terminal might obey: control characters other than line breaks
/// and tabs, and marks that turn the direction of writing. Web sources are those of the web only.
AIResponse presentable(AIResponse response);

}  // namespace tesserine
