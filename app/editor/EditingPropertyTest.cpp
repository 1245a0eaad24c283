#include "app/editor/EditorFixture.h"
#include "core/body/CanonicalBody.h"
#include "core/body/RandomBodyFixture.h"

#include <QClipboard>
#include <QTextBlock>

#include <cstdint>
#include <random>
#include <string>

namespace tesserine::app {
namespace {

constexpr const char* randomCommands[] = {
    "format.bold",      "format.italic",     "format.strike",   "format.highlight",
    "format.code",      "format.subscript",  "format.clear",    "format.paragraph",
    "format.heading1",  "format.heading4",   "format.numbered", "format.bullets",
    "format.checklist", "format.tick",       "format.indent",   "format.outdent",
    "format.lineUp",    "format.lineDown",   "format.quote",    "format.codeBlock",
    "format.divider",   "format.alignRight", "edit.pastePlain", "format.justify"};

constexpr const char* randomKeys[] = {
    "a",
    " ",
    "\n",
    "\n\n",
    "\t",
    "\b",
    "\b\b",
    "\x7F",
    "# ",
    "- ",
    "1. ",
    "[] ",
    "> ",
    "```\n",
    "---\n",
    "https://e.org/x ",
    "é…",
    "word "};

/// Somebody who presses anything anywhere.
class EditingProperty : public test::EditorFixture {
public:
    void startAt(std::uint64_t seed) { dice.seed(seed); }
    /// The same on every machine, as distributions of the library are not.
    std::size_t below(std::size_t bound) { return dice() % bound; }
    bool mayBe(std::size_t percent) { return below(100) < percent; }
    template <std::size_t count>
    const char* oneOf(const char* const (&choices)[count]) {
        return choices[below(count)];
    }
    void moveCursor() {
        const auto length = static_cast<std::size_t>(document().characterCount());
        QTextCursor cursor(&document());
        cursor.setPosition(static_cast<int>(below(length)));
        if (mayBe(40)) {
            cursor.setPosition(static_cast<int>(below(length)), QTextCursor::KeepAnchor);
        }
        editor.body().setTextCursor(cursor);
    }
    void doSomething() {
        if (mayBe(50)) moveCursor();
        const std::size_t what = below(10);
        if (what < 4) {
            type(oneOf(randomKeys));
        } else if (what < 8) {
            commands.trigger(oneOf(randomCommands));
        } else if (what == 8) {
            editor.body().copy();
        } else {
            editor.body().paste();
        }
    }

    std::mt19937_64 dice;
};

TEST_F(EditingProperty, WhateverIsDoneCanBeStoredUndoneAndDoneAgain) {
    test::BodyMaker maker(5);
    for (std::uint64_t seed = 0; seed < 40 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        startAt(seed);
        const std::string body = canonicalBody(maker.soup() + maker.code() + "<p>words</p>").html;
        const CDNote& note = openNote("");
        environment->notes().updateNote(
            context(), environment->notes().getNote(context(), *note.id), {.html = body});
        context().save();
        ASSERT_EQ(html(), body);
        editor.body().setFocus();
        for (int step = 0; step < 20; ++step) {
            doSomething();
        }
        const std::string changed = html();
        const std::string stored = canonicalBody(changed).html;

        // What is stored is what is shown: opened again it is the same.
        NoteDocument again;
        again.setContent(attributedText(stored));
        EXPECT_EQ(again.html(), stored);

        while (document().isUndoAvailable()) {
            commands.trigger("edit.undo");
        }
        EXPECT_EQ(html(), body);
        while (document().isRedoAvailable()) {
            commands.trigger("edit.redo");
        }
        EXPECT_EQ(html(), changed);
    }
}

TEST_F(EditingProperty, WhoComesBackToANoteCanStillUndo) {
    test::BodyMaker maker(7);
    int undone = 0;
    const Uuid other = *addNote("Other").id;
    for (std::uint64_t seed = 0; seed < 40 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        startAt(seed);
        const CDNote& note = openNote(canonicalBody(maker.soup() + "<p>words</p>").html);
        const std::string body = *note.html;
        for (int step = 0; step < 20; ++step) {
            doSomething();
            if (mayBe(20)) commands.trigger(mayBe(70) ? "edit.undo" : "edit.redo");
            ASSERT_TRUE(editor.save());
        }
        const std::string changed = *note.html;
        ASSERT_TRUE(editor.open(other) && editor.open(*note.id));
        EXPECT_EQ(html(), changed);
        EXPECT_FALSE(document().isModified());
        if (!document().isUndoAvailable()) continue;
        ++undone;
        while (document().isUndoAvailable()) {
            commands.trigger("edit.undo");
        }
        EXPECT_EQ(html(), body);
    }
    EXPECT_GE(undone, 30);
}

}  // namespace
}  // namespace tesserine::app
