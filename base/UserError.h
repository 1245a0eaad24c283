#pragma once

#include <stdexcept>
#include <string>

namespace tesserine {

/// A failure whose `what()` is one full sentence fit to show to the user.
///
/// Every area derives one small class from it, with a factory per case. Programs catch it at the
/// top: the window shows the sentence, the terminal prints it and exits with a status that is not
/// zero.
class UserError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tesserine
