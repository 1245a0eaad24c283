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
    struct Case {
        QStringList words;
        const char* mistake;
    };
    for (const Case& one :
         {Case{{"--size", "0x700"}, "--size must be followed by WIDTHxHEIGHT."},
          {{"--size"}, "--size must be followed by WIDTHxHEIGHT."},
          {{"--theme=pink"}, "--theme must be followed by light or dark."},
          {{"--library"}, "--library must be followed by FOLDER."},
          {{"--screenshot="}, "--screenshot must be followed by FILE."},
          {{"--colour", "blue"}, "“--colour” is no option that Tesserine knows."}}) {
        EXPECT_EQ(StartOptions::read(one.words).mistake, one.mistake);
    }
}

}  // namespace
}  // namespace tesserine::app
