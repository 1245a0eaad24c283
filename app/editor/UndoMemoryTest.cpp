#include "app/editor/UndoMemory.h"

#include "tests/support/SeededRandom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

using testing::ElementsAre;

const Uuid first = *Uuid::parse("00000000-0000-4000-8000-000000000001");
const Uuid secondNote = *Uuid::parse("00000000-0000-4000-8000-000000000002");

class UndoMemoryTest : public testing::Test {
public:
    /// As an editor does that writes on; `steps` can be undone then.
    void write(const std::string& html) { memory.add({.html = html, .steps = ++steps}, false); }
    void undoTo(const std::string& html, int toSteps) {
        steps = toSteps;
        memory.add({.html = html, .steps = toSteps}, true);
    }
    /// The states of the first note, which is left and opened again; "|" stands before those that
    /// were undone.
    std::vector<std::string> kept(const std::string& html) {
        memory.open(secondNote, "x");
        const UndoHistory& history = memory.open(first, html);
        std::vector<std::string> result;
        for (std::size_t i = 0; i < history.states.size(); ++i) {
            result.push_back((i == history.now + 1 ? "|" : "") + history.states[i].html);
        }
        return result;
    }

    UndoMemory memory;
    int steps = 0;
};

TEST_F(UndoMemoryTest, KeepsWhatWasTakenAwayAndNotEveryLetter) {
    memory.open(first, "<p></p>");
    for (const char* const typed : {"<p>a</p>", "<p>ab</p>", "<p>abc</p>", "<p>abc</p><p>d</p>"}) {
        write(typed);
    }
    write("<p>abc</p>");
    write("<p>abcd</p>");
    EXPECT_THAT(
        kept("<p>abcd</p>"),
        ElementsAre("<p></p>", "<p>abc</p>", "<p>abc</p><p>d</p>", "<p>abc</p>", "<p>abcd</p>"));
    write("<p>abcde</p>");
    EXPECT_EQ(kept("<p>abcde</p>").size(), 6U) << "of another visit";
    EXPECT_THAT(kept("<p>of others</p>"), ElementsAre("<p>of others</p>"));
}

TEST_F(UndoMemoryTest, WhatWasUndoneIsDoneAgainOnlyUntilSomethingElseIsWritten) {
    memory.open(first, "");
    for (const char* const written : {"a", "b", "c"}) {
        write(written);
    }
    undoTo("a", 1);
    EXPECT_THAT(kept("a"), ElementsAre("", "a", "|b", "c"));
    undoTo("between", 2);
    memory.add({.html = "c", .steps = 3}, false);
    EXPECT_THAT(kept("c"), ElementsAre("", "a", "b", "between", "c")) << "all was done again";
    undoTo("", 0);
    write("new");
    EXPECT_THAT(kept("new"), ElementsAre("", "new"));
    undoTo("", 0);
    write("newer");
    EXPECT_THAT(kept("newer"), ElementsAre("", "newer"));
    memory.forget();
    write("newest");
    EXPECT_THAT(kept("newest"), ElementsAre("newest"));
}

TEST_F(UndoMemoryTest, LongAdditionsAreSeveralSteps) {
    memory.open(first, "");
    std::string typed;
    for (std::size_t i = 0; i < 3 * UndoMemory::longestStep; ++i) {
        typed += 'x';
        write(typed);
    }
    EXPECT_EQ(kept(typed).size(), 4U);
}

TEST_F(UndoMemoryTest, IsBounded) {
    memory.open(first, "");
    const auto letters = [](char letter) { return std::string(UndoMemory::mostBytes / 4, letter); };
    for (const char letter : std::string("abcdefghij")) {
        write(letters(letter));
    }
    EXPECT_THAT(
        kept(letters('j')), ElementsAre(letters('g'), letters('h'), letters('i'), letters('j')));
    test::SeededRandom random(1);
    for (std::size_t i = 0; i <= UndoMemory::mostNotes; ++i) {
        memory.open(Uuid::random(random), "a");
        write("b");
    }
    EXPECT_EQ(kept(letters('j')).size(), 1U);
}

}  // namespace
}  // namespace tesserine::app
