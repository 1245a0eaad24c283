#include "core/services/PassageService.h"

#include "base/Clock.h"
#include "base/Encoding.h"
#include "core/body/SelectiveEncryption.h"
#include "core/services/LibraryFixture.h"
#include "core/services/NoteService.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace tesserine {
namespace {

class PassageServiceTest : public test::LibraryFixture {
protected:
    CDNote& noteWith(const std::string& html) {
        return notes_.createNote(context, {.title = "Plan", .html = html});
    }
    /// Changes the body an hour after the last change, which keeps the present one as a revision.
    void edit(CDNote& note, const std::string& html) {
        advance(std::chrono::hours(1));
        notes_.updateNote(context, note, {.html = html});
    }

    NoteService notes_{clock};
    PassageService passages_{notes_, random};
};

TEST_F(PassageServiceTest, LocksAndUnlocksByUpdatesOfTheNote) {
    CDNote& note = noteWith("<p>Meet at the old mill.</p><ul><li>Bring the old mill map</li></ul>");
    passages_.lock(context, note, "old mill", "pass");

    const auto blobs = PassageService::blobs(note);
    ASSERT_EQ(blobs.size(), 2U);
    EXPECT_EQ(blobs[0], blobs[1]);
    EXPECT_EQ(SelectiveEncryption::decrypt(blobs[0], "pass").text(), "old mill");
    EXPECT_EQ(
        *note.plainText, "Meet at the\n🔒 Encrypted text\n.\n• Bring the\n🔒 Encrypted text\n• map");
    EXPECT_EQ(note.contentVersion.valueOr(0), 2);
    EXPECT_EQ(notes_.revisions(note).size(), 1U);

    passages_.removeLock(context, note, 1, "old\nmill <3");
    EXPECT_EQ(PassageService::blobs(note).size(), 1U);
    EXPECT_EQ(
        *note.plainText, "Meet at the\n🔒 Encrypted text\n.\n• Bring the\nold\nmill <3\n• map");
    EXPECT_EQ(note.contentVersion.valueOr(0), 3);
}

TEST_F(PassageServiceTest, LeavesTheNoteAloneWhenItCannotLock) {
    CDNote& note = noteWith("<p>a</p><table><tr><td>b</td></tr></table>");
    const std::string body = *note.html;
    const auto refusal = [&](const std::string& passage) -> std::string {
        try {
            passages_.lock(context, note, passage, "pass");
            return {};
        } catch (const UserError& error) {
            return error.what();
        }
    };
    const std::string notLockable =
        "Couldn't encrypt the selection. Make sure some text is selected outside any other "
        "protected block.";
    EXPECT_EQ(refusal("b"), notLockable);
    EXPECT_EQ(refusal("c"), notLockable);
    EXPECT_EQ(refusal(" "), notLockable);
    EXPECT_THROW(passages_.lock(context, note, "a", ""), SelectiveEncryptionError);
    EXPECT_EQ(*note.html, body);
    EXPECT_TRUE(notes_.revisions(note).empty());

    std::string many;
    for (std::size_t i = 0; i <= PassageService::mostPlaces; ++i) {
        many += "x.";
    }
    edit(note, many);
    EXPECT_NE(refusal("x").find("so many places"), std::string::npos);
}

TEST_F(PassageServiceTest, FindsWhatStillHoldsThePassage) {
    CDNote& note = noteWith("<p>first</p>");
    edit(note, "<p>the <em>se</em>cret</p>");
    edit(note, "<ul><li>secret</li><li>word</li></ul><table><tr><td>secret</td></tr></table>");
    note.originalSource = Bytes{'#', ' ', 's', 'e', 'c', 'r', 'e', 't'};
    passages_.lock(context, note, "secret\nword", "pass");

    auto copies = PassageService::copiesOf(note, "secret\nword");
    EXPECT_EQ(copies.revisions.size(), 0U);  // taken less than five minutes after the last
    EXPECT_FALSE(copies.isInSource || copies.isInNote);

    copies = PassageService::copiesOf(note, "secret");
    ASSERT_EQ(copies.revisions.size(), 1U);
    EXPECT_TRUE(copies.isInNote);
    EXPECT_TRUE(copies.isInSource);
    PassageService::remove(context, note, copies);
    copies = PassageService::copiesOf(note, "secret");
    EXPECT_TRUE(copies.isInNote);
    EXPECT_FALSE(copies.canBeRemoved());
    EXPECT_EQ(notes_.revisions(note).size(), 1U);
}

TEST_F(PassageServiceTest, EndsAConflictOnlyWithItsLastVersion) {
    CDNote& note = noteWith("<p>a</p>");
    notes_.saveEdit(context, note, {.html = "<p>secret</p>", .loadedHTML = "<p>old</p>"});
    notes_.saveEdit(context, note, {.html = "<p>b</p>", .loadedHTML = "<p>old</p>"});
    ASSERT_TRUE(note.hasConflict.valueOr(false));
    PassageService::remove(context, note, PassageService::copiesOf(note, "secret"));
    EXPECT_TRUE(note.hasConflict.valueOr(false));
    PassageService::remove(context, note, PassageService::copiesOf(note, "a"));
    EXPECT_FALSE(note.hasConflict.valueOr(true));
}

/// The files below `folder` that hold `text`.
std::string filesWith(const std::filesystem::path& folder, const std::string& text) {
    std::string names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const bool holds = entry.is_regular_file()
                           && test::contentOf(entry.path()).find(text) != std::string::npos;
        if (holds) names += entry.path().filename().string() + " ";
    }
    return names;
}

TEST(LockedPassage, IsInNoFileOfTheLibraryAfterwards) {
    const test::TemporaryFolder folder;
    FixedClock clock(test::at("2026-03-14T09:00:00Z"));
    SecureRandom random;
    TesserineStore store({.directory = folder / "library"}, {.clock = clock, .random = random});
    StoreContext& context = store.viewContext();
    const NoteService notes(clock);
    const PassageService passages(notes, random);

    // Bodies of many sizes, so that rows move between pages and overflow them.
    const std::string secret = "meet at the old mill";
    std::string filler;
    CDNote* note = nullptr;
    for (int i = 0; i < 60; ++i) {
        clock.advance(std::chrono::hours(1));
        filler += "<p>Lorem ipsum dolor sit amet " + std::to_string(i) + "</p>";
        if (i == 20) {
            note = &notes.createNote(context, {.title = "Plan", .html = "<p>" + secret + "</p>"});
            const std::string source = std::string(300'000, '.') + secret;
            note->originalSource = Bytes(source.begin(), source.end());
        } else if (i > 20 && i % 2 == 0) {
            std::string body = filler;
            body.append("<p>So ").append(secret).append(".</p>").append(filler, 0, 400);
            if (i % 4 == 0) body += filler;
            notes.updateNote(context, *note, {.html = body});
        } else {
            notes.createNote(context, {.title = "Other", .html = filler});
        }
        context.save();
    }

    clock.advance(std::chrono::hours(1));
    passages.lock(context, *note, secret, "pass");
    context.save();
    ASSERT_TRUE(store.emptyJournal());
    EXPECT_NE(filesWith(folder.path(), secret), "");  // in earlier versions and the source

    PassageService::remove(context, *note, PassageService::copiesOf(*note, secret));
    context.save();
    ASSERT_TRUE(store.emptyJournal());
    EXPECT_EQ(filesWith(folder.path(), secret), "");
    EXPECT_EQ(
        SelectiveEncryption::decrypt(PassageService::blobs(*note).at(0), "pass").text(), secret);
}

}  // namespace
}  // namespace tesserine
