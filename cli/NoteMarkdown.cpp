#include "cli/NoteMarkdown.h"

#include "cli/BodyInput.h"
#include "core/body/BodyError.h"
#include "core/body/CanonicalBody.h"
#include "core/export/MarkdownRenderer.h"

namespace tesserine::cli {

namespace {

/// The stored body that Markdown becomes; empty for one that is too large.
std::string storedBody(const std::string& markdown) {
    try {
        return canonicalBody(htmlFromMarkdown(markdown)).html;
    } catch (const BodyError&) {
        return {};
    }
}

}  // namespace

NoteMarkdown markdownOfNote(const std::string& html) {
    NoteMarkdown markdown{.text = markdownOf(html, {.readBack = storedBody})};
    markdown.isLossless = storedBody(markdown.text) == html;
    return markdown;
}

}  // namespace tesserine::cli
