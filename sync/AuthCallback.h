#pragma once

#include "base/Product.h"

#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// What the web sign-in said when it came back to the program.
struct AuthCallback {
    enum class Kind {
        code,    ///< `text` is the one-time code
        failed,  ///< `text` is a sentence to show
    };
    Kind kind = Kind::code;
    std::string text;

    /// Reads an address such as `tesserine://auth?code=…`. None for one that is no sign-in callback
    /// or says nothing. Throws `SyncError` (notInvited, cancelled).
    static std::optional<AuthCallback> parse(
        std::string_view address, std::string_view scheme = product::urlScheme);
};

}  // namespace tesserine
