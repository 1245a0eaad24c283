#pragma once

#include "ai/AISettings.h"
#include "ai/AskTesserine.h"
#include "ai/ProviderChoice.h"
#include "ai/QuestionTerms.h"
#include "ai/SentLog.h"
#include "base/Calendar.h"

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

class AppEnvironment;

/// A question as it was asked in the window.
struct AskedQuestion {
    std::string text;
    QuestionFilters filters{};
    AskTesserine::Options options{};
};

/// A question that is ready to be sent.
struct FramedQuestion {
    PreparedQuestion prepared;
    /// Where to look in the note of each citation; empty for a file's text.
    std::vector<std::string> places;
};

/// The assistant with the settings of the moment it was made, on the main thread. What it does is
/// done on another thread, one thing at a time.
class Assistant {
public:
    explicit Assistant(AppEnvironment& environment);

    const AISettings& settings() const { return settings_; }
    /// Whom requests go to, as people know it: a host.
    std::string destination() const;
    /// Looks for passages and frames the question with them. Throws what search and store throw.
    FramedQuestion frame(const AskedQuestion& question, StoreContext& context) const;
    AIRequest frameAction(
        NoteAction action, const std::string& noteText, const std::string& question) const;
    /// Keeps a record and sends once. Throws `AIError` and other sentences for the user.
    AIResponse send(
        const AIRequest& request,
        const std::string& purpose,
        const std::vector<std::string>& titles,
        const std::stop_token& stop) const;

private:
    std::unique_ptr<AIProvider> provider() const;

    AppEnvironment& environment_;
    AISettings settings_;
    ProviderSources sources_;
    std::string serviceURL_;
    Calendar calendar_;
};

/// The record of what was sent from this machine, shared with the terminal.
SentLog sentLogOf(const AppEnvironment& environment);

}  // namespace tesserine::app
