#pragma once

#include "base/UserError.h"

#include <string>

namespace tesserine {

/// Why the library could not be opened, read or saved.
class StoreError final : public UserError {
public:
    enum class Kind { loadFailed, notFound, saveFailed, readFailed };

    /// The library could not be opened; nothing was changed.
    static StoreError loadFailed(const std::string& detail) {
        return {Kind::loadFailed, "Tesserine could not open its library. " + detail};
    }
    /// `what` names what was looked for, such as "The note".
    static StoreError notFound(const std::string& what) {
        return {Kind::notFound, what + " could not be found."};
    }
    /// Nothing of the save is in the file; the context still holds every change.
    static StoreError saveFailed(const std::string& detail) {
        return {Kind::saveFailed, "Your changes could not be saved. " + detail};
    }
    static StoreError readFailed(const std::string& detail) {
        return {Kind::readFailed, "Tesserine could not read its library. " + detail};
    }
    Kind kind() const noexcept { return kind_; }

private:
    StoreError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

}  // namespace tesserine
