#include "bench/NoteGenerator.h"

#include "core/body/AttributedTextReader.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/CanonicalBody.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace tesserine::bench {
namespace {

std::string describe(const GeneratedNote& note) {
    std::string text = note.id.text() + "|" + note.title + "|" + note.html + "|" + note.plainText
                       + "|" + note.createdAt.iso() + "|" + note.updatedAt.iso();
    for (const std::size_t tag : note.tags) {
        text += "|" + std::to_string(tag);
    }
    for (const auto& attachment : note.attachments) {
        text += "|" + attachment.filename + " " + std::to_string(attachment.byteCount);
    }
    return text;
}

TEST(NoteGenerator, MakesTheSameNoteWhateverWasMadeBefore) {
    const NoteGenerator generator(500, 7);
    const auto all = generator.allNotes();
    for (const std::size_t place : {499U, 0U, 250U}) {
        EXPECT_EQ(describe(NoteGenerator(500, 7).note(place)), describe(all[place]));
    }
    EXPECT_NE(describe(NoteGenerator(500, 8).note(0)), describe(all[0]));
}

TEST(NoteGenerator, NotesAreAsLargeAsRealOnes) {
    const NoteGenerator generator(4000);
    std::vector<std::size_t> sizes;
    std::size_t sum = 0;
    for (const GeneratedNote& note : generator.allNotes()) {
        sizes.push_back(note.plainText.size());
        sum += note.plainText.size();
    }
    std::ranges::sort(sizes);
    EXPECT_NEAR(static_cast<double>(sizes[sizes.size() / 2]), 1000, 150);
    EXPECT_NEAR(static_cast<double>(sum) / static_cast<double>(sizes.size()), 1800, 200);
    EXPECT_GT(sizes.back(), 20'000U);
}

TEST(NoteGenerator, BodiesAreInTheStoredFormAndThePlainTextIsTheirs) {
    const NoteGenerator generator(400);
    for (const GeneratedNote& note : generator.allNotes()) {
        const CanonicalBody body = canonicalBody(note.html);
        ASSERT_EQ(body.html, note.html);
        ASSERT_EQ(body.plainText, note.plainText);
    }
}

TEST(NoteGenerator, BodiesCanBeEditedAndComeBackToTheLetter) {
    const NoteGenerator generator(400);
    for (const GeneratedNote& note : generator.allNotes()) {
        const AttributedText text = attributedText(note.html);
        ASSERT_EQ(canonicalHTML(text), note.html);
        // Only tables and attachments are not text.
        for (const AttributedText::Run& run : text.runs) {
            const std::string& object = run.style.object;
            ASSERT_TRUE(
                object.empty() || object.starts_with("<table") || object.starts_with("<img")
                || object.starts_with("<div data-ts-attachment"))
                << object;
        }
    }
}

TEST(NoteGenerator, EverythingANoteRefersToIsThere) {
    const NoteGenerator generator(1000);
    std::set<std::string> ids;
    for (std::size_t place = 0; place < generator.noteCount(); ++place) {
        ids.insert(generator.noteID(place).text());
    }
    EXPECT_EQ(ids.size(), generator.noteCount());

    const std::string scheme = "tesserine://note/";
    std::size_t links = 0;
    for (const GeneratedNote& note : generator.allNotes()) {
        SCOPED_TRACE(note.title);
        EXPECT_LE(note.createdAt, note.updatedAt);
        EXPECT_LT(note.notebook.value_or(0), generator.notebooks().size());
        for (const std::size_t tag : note.tags) {
            EXPECT_LT(tag, generator.tags().size());
        }
        for (const auto& attachment : note.attachments) {
            EXPECT_NE(note.html.find(attachment.id.text()), std::string::npos);
        }
        for (auto at = note.html.find(scheme); at != std::string::npos;
             at = note.html.find(scheme, at + 1)) {
            EXPECT_TRUE(ids.contains(note.html.substr(at + scheme.size(), 36)));
            ++links;
        }
    }
    EXPECT_GT(links, 100U);
    for (std::size_t i = 1; i < generator.notebooks().size(); ++i) {
        EXPECT_LT(generator.notebooks()[i].parent.value_or(0), i);
    }
}

}  // namespace
}  // namespace tesserine::bench
