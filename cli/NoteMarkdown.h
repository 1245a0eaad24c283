#pragma once

#include <string>

namespace tesserine::cli {

/// A body as Markdown, for a person to change and `htmlFromMarkdown` to read.
struct NoteMarkdown {
    std::string text;
    /// Whether reading it gives the body back byte for byte.
    bool isLossless = false;
};

/// The Markdown of a stored body. What Markdown would change stays HTML in it.
NoteMarkdown markdownOfNote(const std::string& html);

}  // namespace tesserine::cli
