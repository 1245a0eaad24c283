#include "app/shell/StartOptions.h"

#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

TEST(StartOptions, AreReadApartOrWithAnEqualsSign) {
    const StartOptions options = StartOptions::read(
        {"--library",
         "/tmp/My Library",
         "--open=today",
         "--theme",
         "dark",
         "--size=900x700",
         "tesserine://note/1",
         "--screenshot",
         "a.png",
         "plan.md"});
    EXPECT_EQ(options.mistake, "");
    EXPECT_EQ(options.library, "/tmp/My Library");
    EXPECT_EQ(options.open, "today");
    EXPECT_EQ(options.scheme, Theme::Scheme::dark);
    EXPECT_EQ(options.size, QSize(900, 700));
    EXPECT_EQ(options.screenshot, "a.png");
    EXPECT_EQ(options.requests, (QStringList{"tesserine://note/1", "plan.md"}));
}

TEST(StartOptions, MistakesAreNamed) {
    for (const QStringList& words : std::initializer_list<QStringList>{
             {"--size", "0x700"}, {"--size"}, {"--theme", "pink"}, {"--colour", "blue"}}) {
        EXPECT_EQ(
            StartOptions::read(words).mistake,
            "“" + words.front() + "” is no option that Tesserine knows.");
    }
}

}  // namespace
}  // namespace tesserine::app
