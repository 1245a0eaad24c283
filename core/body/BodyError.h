#pragma once

#include "base/UserError.h"

#include <cstdint>

namespace tesserine {

/// Why a text cannot be the body of a note.
class BodyError final : public UserError {
public:
    enum class Kind : std::uint8_t { tooLarge };

    static BodyError tooLarge() {
        return {
            Kind::tooLarge,
            "This note is larger than 10 MB, so it was not saved. Split it, or attach its large "
            "pictures as files."};
    }

    Kind kind() const noexcept { return kind_; }

private:
    BodyError(Kind kind, const char* sentence) : UserError(sentence), kind_(kind) {}

    Kind kind_;
};

}  // namespace tesserine
