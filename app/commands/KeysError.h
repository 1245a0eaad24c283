#pragma once

#include "base/UserError.h"

namespace tesserine::app {

/// Why a command cannot have the keys that were asked for it.
class KeysError final : public UserError {
public:
    static KeysError taken(const std::string& keys, const std::string& command) {
        return KeysError(keys + " already belongs to “" + command + "”.");
    }
    static KeysError neededForTyping(const std::string& keys) {
        return KeysError(keys + " is needed for typing. Press Ctrl or Alt with it.");
    }

private:
    using UserError::UserError;
};

}  // namespace tesserine::app
