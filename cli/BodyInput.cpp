#include "cli/BodyInput.h"

#include "base/Files.h"
#include "base/Text.h"
#include "cli/Session.h"
#include "core/import/MarkdownHTML.h"
#include "core/import/TextDecoding.h"

#include <algorithm>
#include <array>
#include <istream>

namespace tesserine::cli {

namespace {

std::string escaped(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        switch (c) {
        case '&': result += "&amp;"; break;
        case '<': result += "&lt;"; break;
        case '>': result += "&gt;"; break;
        default: result += c;
        }
    }
    return result;
}

std::string readStandardInput(Session& session) {
    std::streambuf& buffer = *session.environment().input.rdbuf();
    std::string bytes;
    std::array<char, 65'536> piece;
    while (true) {
        const auto count = buffer.sgetn(piece.data(), piece.size());
        bytes.append(piece.data(), static_cast<std::size_t>(count));
        if (bytes.size() > mostInputBytes) {
            throw FileError(FileError::Kind::tooLarge, "Standard input holds more than 64 MB.");
        }
        if (count < static_cast<std::streamsize>(piece.size())) break;
    }
    session.throwIfStopped();  // Ctrl-C ends the input early
    return bytes;
}

/// The bytes of a file, or of standard input for "-".
std::string readBytes(Session& session, const std::filesystem::path& file) {
    if (file == "-") return readStandardInput(session);
    return std::string(textOf(files::read(file, mostInputBytes)));
}

}  // namespace

std::vector<Option> bodyOptions() {
    return {
        {.name = "html",
         .value = "FILE",
         .summary = "The body as HTML; - reads standard input",
         .completion = Completion::file},
        {.name = "markdown",
         .value = "FILE",
         .summary = "The body as Markdown; - reads standard input",
         .completion = Completion::file},
        {.name = "text", .value = "TEXT", .summary = "The body as plain text"}};
}

std::optional<std::string> bodyFrom(Session& session, const Arguments& arguments) {
    const std::string_view form = arguments.oneOf({"html", "markdown", "text"});
    if (form == "html") return readText(session, *arguments.path("html"));
    if (form == "markdown") {
        return htmlFromMarkdown(readBytes(session, *arguments.path("markdown")));
    }
    if (form == "text") return htmlFromText(*arguments.text("text"));
    return std::nullopt;
}

std::string htmlFromMarkdown(const std::string& markdown) {
    return markdownToHTML(decodedText(bytesOf(markdown)).text).html;
}

std::string htmlFromText(std::string_view text) {
    std::string html;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        html += "<p>" + escaped(line) + "</p>";
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return html;
}

std::string readText(Session& session, const std::filesystem::path& file) {
    return text::sanitized(readBytes(session, file));
}

}  // namespace tesserine::cli
