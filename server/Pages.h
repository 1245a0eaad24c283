#pragma once

#include "base/HTTP.h"

#include <string>
#include <string_view>

/// The few pages that people see in a browser. None holds a script, and each says so in its policy.
namespace tesserine::server::pages {

/// Asks for address and password.
HTTPReply signIn();
/// Asks again, after the `remark` what was wrong; the address need not be typed again.
HTTPReply signInAgain(std::string_view email, std::string_view remark);
/// Leads back to the program with a one-time code.
HTTPReply signedIn(std::string_view callback);
/// A shared note, to be read. `html` may be anything: it is sanitised.
HTTPReply note(std::string_view title, std::string_view html);
HTTPReply notFound();

}  // namespace tesserine::server::pages
