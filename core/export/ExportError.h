#pragma once

#include "base/UserError.h"

#include <cstdint>
#include <string>

namespace tesserine {

/// Why an export is not whole. What it wrote stays.
class ExportError final : public UserError {
public:
    enum class Kind : std::uint8_t { writeFailed, cancelled };

    static ExportError writeFailed(const std::string& reason) {
        return {Kind::writeFailed, "Tesserine could not finish writing the export. " + reason};
    }
    static ExportError cancelled() {
        return {
            Kind::cancelled, "The export was cancelled. Files already written were left in place."};
    }

    Kind kind() const noexcept { return kind_; }

private:
    ExportError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}

    Kind kind_;
};

}  // namespace tesserine
