#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/NoteEditor.h"
#include "app/state/AppEnvironment.h"
#include "base/Random.h"
#include "core/model/NoteEntities.h"
#include "tests/support/Child.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <QTest>

#include <csignal>
#include <string>

namespace tesserine::app {
namespace {

constexpr const char* noteID = "0A1B2C3D-0000-4000-8000-00000000000F";
constexpr int second = 1'000;
/// What saving itself may take on a busy machine.
constexpr int patience = 1'500;

/// Types into a note for a while, and is killed.
void typeAndDie(const std::filesystem::path& folder, const std::string& body) {
    const SystemClock clock;
    SecureRandom random;
    AppEnvironment environment(
        {.clock = clock,
         .random = random,
         .zone = "UTC",
         .locale = "en_GB",
         .library = folder / "Library",
         .preferencesFile = folder / "preferences.json"});
    const Uuid id = *Uuid::parse(noteID);
    environment.notes().createNote(
        environment.context(), {.title = "Plan", .html = body, .id = id});
    environment.context().save();
    environment.startWork();
    Commands commands(environment.preferences());
    NoteEditor editor(environment, commands);
    editor.show();
    editor.open(id);
    QTest::keyClicks(&editor.body(), "kept ");
    QTest::qWait(second + patience);
    QTest::keyClicks(&editor.body(), "perhaps ");
    std::raise(SIGKILL);
}

TEST(Crash, LosesNoMoreThanTheLastSecondOfTyping) {
    std::string longBody = "<p>end</p>";
    while (longBody.size() < 100'000) {
        longBody += "<p>Rain again, tea at four.</p>";
    }
    for (const std::string& body : {std::string("<p>end</p>"), longBody}) {
        const test::TemporaryFolder folder;
        EXPECT_EQ(test::runInChild([&] { typeAndDie(folder.path(), body); }), 128 + SIGKILL);
        const SystemClock clock;
        SecureRandom random;
        TesserineStore store({.directory = folder / "Library"}, {.clock = clock, .random = random});
        const CDNote* const note = store.viewContext().find<CDNote>(*Uuid::parse(noteID));
        ASSERT_NE(note, nullptr);
        EXPECT_TRUE(note->html->starts_with("<p>kept ")) << note->html->substr(0, 40);
        EXPECT_TRUE(store.wasEndedUncleanly());
    }
}

}  // namespace
}  // namespace tesserine::app
