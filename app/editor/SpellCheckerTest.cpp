#include "app/editor/SpellChecker.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

TEST(SpellChecker, AsksTheDictionaryOfTheLanguageOrARelatedOne) {
    const test::TemporaryFolder folder;
    test::putContent(folder / "en_XX.aff", "SET UTF-8\nTRY esianrtolcdugmphbyfvkwz\n");
    test::putContent(folder / "en_XX.dic", "2\ngarden\ncafé\n");
    const QStringList folders{QString::fromStdString(folder.path().string())};
    for (const char* language :
         {"en_XX", "en-XX", "en_XX.UTF-8", "en_GB", "C.UTF-8", "POSIX", ""}) {
        SCOPED_TRACE(language);
        SpellChecker checker(language, folders);
        ASSERT_TRUE(checker.isOn());
        EXPECT_TRUE(checker.isCorrect("garden"));
        EXPECT_TRUE(checker.isCorrect("Café"));
        EXPECT_FALSE(checker.isCorrect("gardn"));
        EXPECT_EQ(checker.suggestions("gardn"), QStringList{"garden"});
        checker.accept("gardn");
        EXPECT_TRUE(checker.isCorrect("gardn"));
    }
    SpellChecker none("de_DE", folders);
    EXPECT_FALSE(none.isOn());
    EXPECT_TRUE(none.isCorrect("gardn"));
    EXPECT_TRUE(none.suggestions("gardn").isEmpty());
}

}  // namespace
}  // namespace tesserine::app
