#include "app/editor/UndoMemory.h"

#include "tests/support/SeededRandom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Uuid first = *Uuid::parse("00000000-0000-4000-8000-000000000001");
const Uuid second = *Uuid::parse("00000000-0000-4000-8000-000000000002");

TEST(UndoMemory, KeepsWhatWasTakenAwayAndNotEveryLetter) {
    UndoMemory memory;
    EXPECT_THAT(memory.open(first, "<p></p>"), IsEmpty());
    for (const char* const typed : {"<p>a</p>", "<p>ab</p>", "<p>abc</p>", "<p>abc</p><p>d</p>"}) {
        memory.add(typed);
    }
    memory.add("<p>abc</p>");
    memory.add("<p>abcd</p>");
    memory.open(second, "<p>x</p>");
    EXPECT_THAT(
        memory.open(first, "<p>abcd</p>"),
        ElementsAre("<p></p>", "<p>abc</p><p>d</p>", "<p>abc</p>"));
    memory.add("<p>abcd" + std::string(UndoMemory::longestStep, 'x') + "</p>");
    EXPECT_THAT(memory.open(first, "<p>of others</p>"), IsEmpty());
}

TEST(UndoMemory, LongAdditionsAreSeveralSteps) {
    UndoMemory memory;
    memory.open(first, "");
    std::string typed;
    for (std::size_t i = 0; i < 3 * UndoMemory::longestStep; ++i) {
        typed += 'x';
        memory.add(typed);
    }
    EXPECT_EQ(memory.open(first, typed).size(), 3U);
}

TEST(UndoMemory, IsBounded) {
    UndoMemory memory;
    memory.open(first, "");
    for (int i = 0; i < 10; ++i) {
        memory.add(std::string(UndoMemory::mostBytes / 4, static_cast<char>('a' + i)));
    }
    EXPECT_EQ(memory.open(first, std::string(UndoMemory::mostBytes / 4, 'j')).size(), 3U);
    test::SeededRandom random(1);
    for (std::size_t i = 0; i <= UndoMemory::mostNotes; ++i) {
        memory.open(Uuid::random(random), "a");
        memory.add("b");
    }
    EXPECT_THAT(memory.open(first, std::string(UndoMemory::mostBytes / 4, 'j')), IsEmpty());
}

}  // namespace
}  // namespace tesserine::app
