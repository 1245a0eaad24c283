#pragma once

#include <exception>

namespace tesserine {

/// Ends an operation whose stop token was used. No failure: it is never shown and never tried
/// again.
class OperationCancelled final : public std::exception {
public:
    const char* what() const noexcept override { return "the operation was cancelled"; }
};

}  // namespace tesserine
