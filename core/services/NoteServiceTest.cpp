#include "core/services/NoteService.h"

#include "core/body/Limits.h"
#include "core/services/LibraryFixture.h"
#include "core/services/Limits.h"

#include <gmock/gmock.h>

#include <cmath>

namespace tesserine {
namespace {

using test::at;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NoteServiceTest : public test::LibraryFixture {
public:
    CDNote& insert(const std::string& title, const std::string& html) {
        return service.createNote(context, {.title = title, .html = html});
    }
    void edit(CDNote& note, const std::string& html) {
        service.updateNote(context, note, {.html = html});
    }
    /// "reason: body" of each revision, newest first.
    std::vector<std::string> history(const CDNote& note) const {
        std::vector<std::string> lines;
        for (const CDNoteRevision* revision : service.revisions(note)) {
            lines.push_back(*revision->reason + ": " + *revision->html);
        }
        return lines;
    }
    CDNoteRevision& addConflict(CDNote& note, const std::string& html) {
        auto& revision = context.insert<CDNoteRevision>();
        revision.createdAt = clock.now();
        revision.title = "Theirs";
        revision.html = html;
        revision.plainText = "theirs";
        revision.reason = "conflict";
        revision.note = &note;
        note.hasConflict = true;
        return revision;
    }
    static std::vector<std::string> titles(const std::vector<CDNote*>& notes) {
        std::vector<std::string> result;
        result.reserve(notes.size());
        for (const CDNote* note : notes) {
            result.push_back(note->title.valueOr("-"));
        }
        return result;
    }

    NoteService service{clock};
};

TEST_F(NoteServiceTest, ANewNoteIsStoredInCanonicalFormWithItsPlainText) {
    CDTag& tag = insertTag("work");
    CDNotebook& book = insertNotebook("Plans");
    const CDNote& note = service.createNote(
        context,
        {.title = "Plan",
         .html = "<P onclick='x()'>Buy<script>steal()</script> milk</P>",
         .notebook = &book,
         .tags = {&tag, &tag},
         .sourceURL = "https://example.org/a"});

    EXPECT_EQ(note.html, "<p>Buy milk</p>");
    EXPECT_EQ(note.plainText, "Buy milk");
    EXPECT_EQ(note.contentVersion, 1);
    EXPECT_EQ(note.createdAt, at("2026-03-14T09:00:00Z"));
    EXPECT_EQ(note.updatedAt, note.createdAt);
    EXPECT_EQ(note.notebook, &book);
    EXPECT_THAT(note.tags.all(), ElementsAre(&tag));
    EXPECT_EQ(note.sourceURL, "https://example.org/a");
}

TEST_F(NoteServiceTest, TitlesAndBodiesAreTakenUpToTheirLimitsAndRefusedBeyond) {
    std::string title;
    for (std::size_t i = 0; i < limits::titleCharacters; ++i) {
        title += "é";
    }
    const std::string body(limits::canonicalBodyBytes, 'a');
    CDNote& note = insert(title, body);

    const auto refusal = [&](NoteChange change) -> std::string {
        try {
            service.updateNote(context, note, std::move(change));
        } catch (const UserError& error) {
            return error.what();
        }
        return "taken";
    };
    EXPECT_EQ(refusal({.title = title + "é"}), "The title is longer than 10,000 characters.");
    EXPECT_EQ(
        refusal({.html = body + "a"}),
        "This note is larger than 10 MB, so it was not saved. Split it, or attach its large "
        "pictures as files.");
    EXPECT_EQ(note.title, title);
    EXPECT_EQ(note.html->size(), limits::canonicalBodyBytes);
    EXPECT_EQ(note.contentVersion, 1);
}

TEST_F(NoteServiceTest, EachUpdateRaisesTheVersionByOneAndOnlyUpdatesDo) {
    CDNote& note = insert("Plan", "<p>a</p>");
    advance(std::chrono::seconds(5));
    service.updateNote(context, note, {.title = "Plans"});
    EXPECT_EQ(note.contentVersion, 2);
    service.updateNote(context, note, {.title = "Plans", .html = "<p>b</p>"});
    EXPECT_EQ(note.contentVersion, 3);

    service.moveToTrash(note);
    service.restoreFromTrash(note);
    service.togglePin(note);
    service.setReminder(note, clock.now());
    service.addTag(note, insertTag("work"));
    service.moveToNotebook(note, &insertNotebook("Plans"));
    EXPECT_EQ(note.contentVersion, 3);
    EXPECT_EQ(note.updatedAt, clock.now());
}

TEST_F(NoteServiceTest, ABodyThatOnlyDiffersInItsSpellingLeavesNoRevision) {
    CDNote& note = insert("Plan", "<p>a &amp; b</p>");
    edit(note, "<P class=x>a & b");
    EXPECT_EQ(note.html, "<p>a &amp; b</p>");
    EXPECT_THAT(history(note), IsEmpty());
    EXPECT_EQ(note.contentVersion, 2);
}

TEST_F(NoteServiceTest, EditingKeepsOneRevisionInFiveMinutes) {
    struct Case {
        const char* what;
        std::chrono::seconds sinceLast;
        bool isTaken;
    };
    for (const auto& [what, sinceLast, isTaken] : {
             Case{"at once", std::chrono::seconds(0), false},
             Case{"just inside", std::chrono::seconds(299), false},
             Case{"at the edge", std::chrono::seconds(300), true},
             Case{"clock set back since", std::chrono::seconds(-86'400), true},
         }) {
        SCOPED_TRACE(what);
        CDNote& note = insert("Plan", "<p>1</p>");
        edit(note, "<p>2</p>");
        ASSERT_THAT(history(note), ElementsAre("preEdit: <p>1</p>"));
        advance(sinceLast);
        edit(note, "<p>3</p>");
        EXPECT_EQ(note.revisions.count(), isTaken ? 2U : 1U);
        service.takeRevision(context, note, NoteRevisionReason::autosave);
        EXPECT_EQ(note.revisions.count(), isTaken ? 3U : 2U) << "other reasons have no such rule";
        clock.set(at("2026-03-14T09:00:00Z"));
    }
}

TEST_F(NoteServiceTest, TheTwentyFiveNewestRevisionsStayAndEveryConflict) {
    CDNote& note = insert("Plan", "<p>0</p>");
    addConflict(note, "<p>theirs</p>");
    for (int i = 1; i <= 30; ++i) {
        advance(std::chrono::seconds(301));
        edit(note, "<p>" + std::to_string(i) + "</p>");
    }
    std::vector<std::string> expected;
    for (int body = 29; body >= 5; --body) {
        expected.push_back("preEdit: <p>" + std::to_string(body) + "</p>");
    }
    expected.emplace_back("conflict: <p>theirs</p>");
    EXPECT_EQ(history(note), expected);
}

TEST_F(NoteServiceTest, ARevisionTakenWithTheClockSetBackIsNotTheOneThatGoes) {
    CDNote& note = insert("Plan", "<p>x</p>");
    clock.set(at("2037-01-01T00:00:00Z"));
    for (int i = 0; i < 25; ++i) {
        service.takeRevision(context, note, NoteRevisionReason::autosave);
    }
    clock.set(at("2026-03-14T10:00:00Z"));
    edit(note, "<p>typed today</p>");
    const auto kept = service.revisions(note);
    EXPECT_EQ(kept.size(), 25U);
    EXPECT_EQ(kept.back()->createdAt, at("2026-03-14T10:00:00Z"));
}

TEST_F(NoteServiceTest, RestoringTheOldestRevisionWorksThoughItsCopyPrunesIt) {
    CDNote& note = insert("Plan", "<p>0</p>");
    for (int i = 1; i <= 25; ++i) {
        advance(std::chrono::seconds(301));
        edit(note, "<p>" + std::to_string(i) + "</p>");
    }
    context.save();
    advance(std::chrono::seconds(301));
    CDNoteRevision& oldest = *service.revisions(note).back();
    service.restoreRevision(context, note, oldest);
    EXPECT_EQ(note.html, "<p>0</p>");
    EXPECT_EQ(note.plainText, "0");
    EXPECT_EQ(note.contentVersion, 27);
    EXPECT_EQ(note.revisions.count(), 25U);
    EXPECT_EQ(history(note).front(), "preEdit: <p>25</p>");
}

TEST_F(NoteServiceTest, AVersionThatWasPrunedElsewhereIsNotPutBackAsNothing) {
    CDNote& note = insert("Plan", "<p>now</p>");
    service.takeRevision(context, note, NoteRevisionReason::autosave);
    context.save();
    CDNoteRevision& shown = *service.revisions(note).front();
    context.releaseLargeValues();
    const auto other = store.newBackgroundContext();
    CDNote& same = service.getNote(*other, *note.id);
    for (std::size_t i = 0; i < NoteService::maximumRevisions; ++i) {
        advance(std::chrono::seconds(1));
        service.takeRevision(*other, same, NoteRevisionReason::autosave);
    }
    other->save();

    try {
        service.revertTo(context, note, shown);
        FAIL() << "there is nothing to revert to";
    } catch (const StoreError& error) {
        EXPECT_STREQ(error.what(), "The earlier version could not be found.");
    }
    EXPECT_EQ(note.html, "<p>now</p>");
    EXPECT_EQ(service.revisions(note).size(), NoteService::maximumRevisions);
}

TEST_F(NoteServiceTest, RevertingKeepsWhatWasTypedSinceTheLastRevision) {
    CDNote& note = insert("Plan", "<p>old</p>");
    edit(note, "<p>typed</p>");
    advance(std::chrono::seconds(240));
    edit(note, "<p>typed on</p>");
    service.revertTo(context, note, *service.revisions(note).front());
    EXPECT_EQ(note.html, "<p>old</p>");
    EXPECT_THAT(history(note), ElementsAre("autosave: <p>typed on</p>", "preEdit: <p>old</p>"));

    // Going back and forth keeps nothing twice.
    service.revertTo(context, note, *service.revisions(note).front());
    EXPECT_EQ(note.html, "<p>typed on</p>");
    EXPECT_EQ(history(note).front(), "autosave: <p>old</p>");
}

TEST_F(NoteServiceTest, AConflictEndsWithEitherVersionAndStaysEnded) {
    CDNote& note = insert("Mine", "<p>mine</p>");
    CDNoteRevision& first = addConflict(note, "<p>theirs</p>");
    advance(std::chrono::seconds(1));
    CDNoteRevision& second = addConflict(note, "<p>others</p>");

    service.useConflictVersion(context, note, first);
    EXPECT_EQ(note.title, "Theirs");
    EXPECT_EQ(note.html, "<p>theirs</p>");
    EXPECT_TRUE(note.hasConflict) << "the second one waits";
    service.keepPresentVersion(note);
    EXPECT_FALSE(note.hasConflict);
    EXPECT_EQ(second.reason, "autosave");

    service.restoreRevision(context, note, second);
    EXPECT_FALSE(note.hasConflict) << "an ended conflict must not come back";
    EXPECT_EQ(note.html, "<p>others</p>");
    EXPECT_THAT(history(note), testing::Contains("autosave: <p>mine</p>"));
}

TEST_F(NoteServiceTest, RestoringOneConflictLeavesTheBadgeForAnother) {
    CDNote& note = insert("Mine", "<p>mine</p>");
    CDNoteRevision& only = addConflict(note, "<p>theirs</p>");
    service.restoreRevision(context, note, only);
    EXPECT_FALSE(note.hasConflict);
    addConflict(note, "<p>others</p>");
    service.restoreRevision(context, note, only);
    EXPECT_TRUE(note.hasConflict);
}

TEST_F(NoteServiceTest, AnOldRevisionIsSanitisedOnItsWayBack) {
    CDNote& note = insert("Mine", "<p>mine</p>");
    CDNoteRevision& stale = addConflict(note, "<p onclick=\"x()\">old<script>x()</script></p>");
    service.restoreRevision(context, note, stale);
    EXPECT_EQ(note.html, "<p>old</p>");
    EXPECT_EQ(note.plainText, "old");
}

TEST_F(NoteServiceTest, AnEditMadeOnAnOlderStateKeepsTheOtherBody) {
    using Outcome = NoteService::EditOutcome;
    struct Case {
        const char* what;
        NoteEdit edit;
        Outcome outcome;
    };
    const std::string now = "<p>now</p>";
    for (const auto& [what, edit, outcome] : {
             Case{"same body loaded", {.html = "<p>new</p>", .loadedHTML = now}, Outcome::saved},
             Case{
                 "other body loaded",
                 {.html = "<p>new</p>", .loadedHTML = "<p>before</p>"},
                 Outcome::savedWithConflict},
             Case{"same version", {.html = "<p>new</p>", .loadedVersion = 2}, Outcome::saved},
             Case{
                 "older version",
                 {.html = "<p>new</p>", .loadedVersion = 1},
                 Outcome::savedWithConflict},
             Case{"nothing known", {.html = "<p>new</p>"}, Outcome::saved},
             Case{"title only", {.title = "New", .loadedVersion = 1}, Outcome::saved},
             Case{
                 "both typed the same",
                 {.html = "<P>now", .loadedHTML = "<p>before</p>"},
                 Outcome::saved},
         }) {
        SCOPED_TRACE(what);
        CDNote& note = insert("Plan", "<p>before</p>");
        service.updateNote(context, note, {.html = now});
        advance(std::chrono::seconds(400));

        EXPECT_EQ(service.saveEdit(context, note, edit), outcome);
        const bool isKept = outcome == Outcome::savedWithConflict;
        EXPECT_EQ(bool(note.hasConflict), isKept);
        EXPECT_EQ(note.contentVersion, 3);
        EXPECT_EQ(
            note.html,
            edit.html && !isKept && *edit.html == "<P>now" ? now
            : edit.html                                    ? "<p>new</p>"
                                                           : now);
        if (isKept) {
            // The conflict revision is the newest, so the edit itself needs no further copy.
            EXPECT_THAT(
                history(note), ElementsAre("conflict: <p>now</p>", "preEdit: <p>before</p>"));
        }
    }
}

TEST_F(NoteServiceTest, ABodyThatIsEmptyNowIsNoConflict) {
    CDNote& note = insert("Plan", "");
    EXPECT_EQ(
        service.saveEdit(context, note, {.html = "<p>new</p>", .loadedHTML = "<p>old</p>"}),
        NoteService::EditOutcome::saved);
    EXPECT_THAT(history(note), IsEmpty());
}

TEST_F(NoteServiceTest, PinnedAndFavouriteAreOne) {
    CDNote& note = insert("Plan", "");
    service.togglePin(note);
    EXPECT_TRUE(note.isPinned);
    EXPECT_EQ(note.favoritedAt, clock.now());
    advance(std::chrono::seconds(60));
    service.pin(note);
    EXPECT_EQ(note.favoritedAt, at("2026-03-14T09:00:00Z")) << "its place among the pinned stays";
    service.unpin(note);
    EXPECT_FALSE(note.isPinned);
    EXPECT_FALSE(note.favoritedAt);

    note.isPinned = true;
    EXPECT_TRUE(NoteService::reconcilePin(note));
    EXPECT_EQ(note.favoritedAt, note.updatedAt);
    note.isPinned = false;
    EXPECT_TRUE(NoteService::reconcilePin(note));
    EXPECT_TRUE(note.isPinned);
    EXPECT_FALSE(NoteService::reconcilePin(note));
}

TEST_F(NoteServiceTest, PurgingTakesWhatIsOlderThanTheDaysAndNothingForOddDays) {
    struct Case {
        const char* title;
        std::chrono::seconds ago;
    };
    for (const auto& [title, ago] : {
             Case{"edge", days(30)},
             Case{"past", days(30) + std::chrono::seconds(1)},
             Case{"older", days(31)},
         }) {
        insert(title, "").trashedAt = clock.now() - Instant::Duration(ago);
    }
    insert("live", "");
    const auto purged = [&](std::int64_t count, std::size_t limit = 0) {
        return service.purgeTrash(context, count, limit);
    };
    for (const std::int64_t odd :
         {std::int64_t{0},
          std::int64_t{-1},
          std::int64_t{36'500},
          std::int64_t{1'000'000'000'000'000'000}}) {
        EXPECT_EQ(purged(odd), 0U) << odd;
    }
    EXPECT_EQ(service.expiredCount(context, 30), 2U);
    EXPECT_EQ(purged(30, 1), 1U);
    EXPECT_THAT(titles(context.fetch<CDNote>()), ElementsAre("edge", "past", "live"));
    EXPECT_EQ(purged(30), 1U);
    EXPECT_EQ(service.emptyTrash(context), 1U);
    EXPECT_THAT(titles(context.fetch<CDNote>()), ElementsAre("live"));
}

TEST_F(NoteServiceTest, ADuplicateIsANewNoteWithTheSameContent) {
    struct Case {
        std::optional<std::string> title;
        const char* copy;
    };
    for (const auto& [title, copy] : {
             Case{"Plan", "Plan copy"},
             Case{"Plan ", "Plan  copy"},  // nothing is trimmed
             Case{"", "Copy"},
             Case{" \t", "Copy"},
             Case{std::nullopt, "Copy"},
         }) {
        EXPECT_EQ(NoteService::duplicateTitle(title), copy);
    }

    CDNote& note = service.createNote(
        context,
        {.title = "Plan",
         .html = "<p>1</p>",
         .notebook = &insertNotebook("Plans"),
         .tags = {&insertTag("work")},
         .sourceURL = "https://example.org"});
    note.originalSource = Bytes{1, 2, 3};
    note.importFingerprint = "f";
    note.reminderAt = clock.now();
    edit(note, "<p>2</p>");
    service.togglePin(note);
    service.moveToTrash(note);
    advance(std::chrono::seconds(10));

    const CDNote& copy = service.duplicateNote(context, note);
    EXPECT_NE(copy.id, note.id);
    EXPECT_EQ(copy.html, "<p>2</p>");
    EXPECT_EQ(copy.plainText, "2");
    EXPECT_EQ(copy.notebook.get(), note.notebook.get());
    EXPECT_EQ(copy.tags.all(), note.tags.all());
    EXPECT_EQ(copy.sourceURL, note.sourceURL);
    EXPECT_EQ(copy.originalSource, note.originalSource);
    EXPECT_EQ(copy.createdAt, clock.now());
    EXPECT_EQ(copy.contentVersion, 1);
    EXPECT_FALSE(copy.importFingerprint) << "or an import would take the copy for its own note";
    EXPECT_FALSE(copy.isPinned || copy.favoritedAt || copy.trashedAt || copy.reminderAt);
    EXPECT_TRUE(copy.revisions.empty());
}

TEST_F(NoteServiceTest, TheDefaultTemplatesAreSeededOnceAndAgainWhenAllAreInTheTrash) {
    EXPECT_EQ(service.seedDefaultTemplates(context), 2U);
    EXPECT_EQ(service.seedDefaultTemplates(context), 0U);
    advance(std::chrono::seconds(1));
    for (CDNote* made : service.templates(context)) {
        service.moveToTrash(*made);
    }
    EXPECT_EQ(service.seedDefaultTemplates(context), 2U);

    advance(std::chrono::seconds(1));
    CDNote& meeting = *context.fetchFirst<CDNote>(
        {.predicate = {"title == %@ AND trashedAt == nil", "Meeting Notes"}});
    EXPECT_EQ(
        meeting.html,
        "<h2>Attendees</h2><p></p><h2>Agenda</h2><p></p><h2>Action Items</h2>"
        "<ul class=\"ts-checklist\"><li data-checked=\"false\"></li></ul>");
    service.updateNote(context, meeting, {.title = "Meetings"});
    EXPECT_THAT(titles(service.templates(context)), ElementsAre("Meetings", "To-Do List"));

    CDNotebook& book = insertNotebook("Plans");
    const CDNote& made = service.createFromTemplate(context, meeting, &book);
    EXPECT_FALSE(made.isTemplate);
    EXPECT_EQ(made.html, meeting.html);
    EXPECT_EQ(made.notebook, &book);
    EXPECT_EQ(made.contentVersion, 1);
    EXPECT_TRUE(service.saveAsTemplate(context, insert("Letter", "<p>Dear</p>")).isTemplate);
}

TEST_F(NoteServiceTest, FindersSeeTheNotesTheyPromise) {
    CDNote& target = insert("Target", "");
    const std::string link = "<p><a href=\"" + NoteService::noteURL(*target.id) + "\">see</a></p>";
    CDNote& linking = insert("Linking", link);
    CDNote& trashed = insert("Trashed", link);
    CDNote& pattern = insert("Template", link);
    pattern.isTemplate = true;
    service.updateNote(context, target, {.html = link});  // to itself
    service.moveToTrash(trashed);
    trashed.importFingerprint = "twice";
    EXPECT_EQ(service.findByImportFingerprint(context, "twice"), nullptr);
    linking.importFingerprint = "twice";
    EXPECT_EQ(service.findByImportFingerprint(context, "twice"), &linking);

    EXPECT_THAT(titles(service.backlinks(context, target)), ElementsAre("Linking"));
    EXPECT_EQ(service.noteCount(context), 3U);
    EXPECT_EQ(service.liveNoteCount(context), 2U);

    const Instant now = clock.now();
    service.setReminder(linking, now + std::chrono::seconds(60));
    service.setReminder(target, now);
    service.setReminder(trashed, now + std::chrono::seconds(1));
    service.setReminder(pattern, now + std::chrono::seconds(1));
    EXPECT_THAT(
        titles(service.upcomingReminders(context, now, 5)), ElementsAre("Target", "Linking"));
    EXPECT_THAT(titles(service.upcomingReminders(context, now, 1)), ElementsAre("Target"));
    EXPECT_THAT(service.upcomingReminders(context, now, 0), IsEmpty());

    EXPECT_EQ(&service.getNote(context, *target.id), &target);
    try {
        service.getNote(context, Uuid{});
        FAIL() << "a note that is not there was found";
    } catch (const StoreError& error) {
        EXPECT_STREQ(error.what(), "The note could not be found.");
    }
}

TEST_F(NoteServiceTest, EverydayChangesStampOnceAndNothingForNothing) {
    CDNote& note = insert("Plan", "");
    CDTag& tag = insertTag("work");
    CDNotebook& book = insertNotebook("Plans");
    const auto stamps = [&](auto change) {
        advance(std::chrono::seconds(1));
        change();
        return note.updatedAt == clock.now();
    };
    EXPECT_TRUE(stamps([&] { service.addTag(note, tag); }));
    EXPECT_FALSE(stamps([&] { service.addTag(note, tag); }));
    EXPECT_TRUE(stamps([&] { service.removeTag(note, tag); }));
    EXPECT_FALSE(stamps([&] { service.removeTag(note, tag); }));
    EXPECT_TRUE(stamps([&] { service.moveToNotebook(note, &book); }));
    EXPECT_FALSE(stamps([&] { service.moveToNotebook(note, &book); }));
    EXPECT_TRUE(stamps([&] { service.moveToNotebook(note, nullptr); }));

    EXPECT_TRUE(stamps([&] { service.setLocation(note, NoteLocation{-90, 180}); }));
    EXPECT_TRUE(note.hasLocation);
    for (const NoteLocation nowhere :
         {NoteLocation{90.1, 0}, NoteLocation{0, -180.1}, NoteLocation{std::nan(""), 0}}) {
        EXPECT_THROW(service.setLocation(note, nowhere), NoteError);
    }
    EXPECT_EQ(note.latitude, -90);
    service.setLocation(note, std::nullopt);
    EXPECT_FALSE(note.hasLocation);
}

}  // namespace
}  // namespace tesserine
