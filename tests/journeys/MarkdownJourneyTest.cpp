#include "bench/NoteGenerator.h"
#include "cli/BodyInput.h"
#include "cli/NoteMarkdown.h"
#include "core/body/CanonicalBody.h"
#include "core/export/MarkdownRenderer.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

TEST(MarkdownJourney, OrdinaryNotesGoOutAndComeBack) {
    constexpr std::size_t count = 150;
    const bench::NoteGenerator generator(count, 7);
    for (std::size_t i = 0; i < count; ++i) {
        const CanonicalBody body = canonicalBody(generator.note(i).html);
        // For a person to edit, nothing may be lost.
        EXPECT_TRUE(cli::markdownOfNote(body.html).isLossless) << body.html;
        // For other programs the text is the same.
        const std::string exported = markdownOf(body.html);
        const std::string html = cli::htmlFromMarkdown(exported);
        EXPECT_EQ(canonicalBody(html).plainText, body.plainText) << exported;
    }
}

}  // namespace
}  // namespace tesserine
