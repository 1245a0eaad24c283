#pragma once

#include "base/UserError.h"

#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class CDNote;
class Preferences;

/// Something was to be sent that never is.
class NeverSentError final : public UserError {
public:
    NeverSentError()
        : UserError(
            "This note is never sent: it is in the trash, a template, or in a notebook or with a "
            "tag that you excluded.") {}
};

/// What the user never wants sent to a language model: names of notebooks and tags, in any case.
/// Whatever lies below them is meant as well.
struct AIExclusions {
    static constexpr std::string_view notebooksKey = "tesserine.assistant.excludedNotebooks";
    static constexpr std::string_view tagsKey = "tesserine.assistant.excludedTags";

    std::vector<std::string> notebooks;
    std::vector<std::string> tags;

    static AIExclusions load(const Preferences& preferences);

    /// Whether anything of the note may be sent: never of one in the trash or of a template.
    bool permit(const CDNote& note) const;
    /// Throws `NeverSentError` unless the note may be sent.
    void require(const CDNote& note) const;
};

}  // namespace tesserine
