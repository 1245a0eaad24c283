#pragma once

#include "cli/Command.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::cli {

class Arguments;
class Session;

/// The options with which a body is given: --html, --markdown and --text.
std::vector<Option> bodyOptions();

/// The body that the options give, as HTML that is not sanitised yet; none when no such option was
/// given. Throws `UsageError` when there are two, and `FileError`.
std::optional<std::string> bodyFrom(Session& session, const Arguments& arguments);

/// CommonMark with the usual extensions, in any encoding, as HTML that is not sanitised yet.
std::string htmlFromMarkdown(const std::string& markdown);
/// Plain text as HTML: every line is a paragraph.
std::string htmlFromText(std::string_view text);

/// The bytes of a file, or of standard input for "-", as valid UTF-8. Throws `FileError` above
/// `mostInputBytes`.
std::string readText(Session& session, const std::filesystem::path& file);
inline constexpr std::uint64_t mostInputBytes = 64'000'000;

}  // namespace tesserine::cli
