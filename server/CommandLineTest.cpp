#include "server/CommandLine.h"

#include <gtest/gtest.h>

namespace tesserine::server {
namespace {

TEST(CommandLineTest, ServingTakesItsOptionsInAnyOrder) {
    const CommandLine line = CommandLine::parse(
        {"--listen",
         "0.0.0.0:443",
         "serve",
         "--data",
         "/srv/notes",
         "--file-quota",
         "0",
         "--certificate",
         "a.pem",
         "--key",
         "b.pem",
         "--public-url",
         "https://notes.example.org"});
    EXPECT_EQ(line.command, CommandLine::Command::serve);
    EXPECT_EQ(line.service.folder, "/srv/notes");
    EXPECT_EQ(line.service.publicURL, "https://notes.example.org");
    EXPECT_EQ(line.service.quotas.files, 0);
    EXPECT_EQ(line.service.quotas.records, std::nullopt) << "as much as the disk holds";
    EXPECT_EQ(line.listening.host, "0.0.0.0");
    EXPECT_EQ(line.listening.port, 443);
    EXPECT_EQ(line.listening.certificate, "a.pem");
    EXPECT_EQ(line.listening.key, "b.pem");
}

TEST(CommandLineTest, NobodyElseReachesAServiceThatIsNotToldWhereToListen) {
    const CommandLine line = CommandLine::parse({"--data", "d", "serve"});
    EXPECT_EQ(line.listening.host, "127.0.0.1");
    EXPECT_EQ(line.listening.port, 8080);
    EXPECT_EQ(line.service.quotas.files, std::nullopt);
}

TEST(CommandLineTest, SharedLinksLeadToWhereItListensUnlessToldOtherwise) {
    const auto urlOf = [](std::vector<std::string> options) {
        options.insert(options.begin(), {"--data", "d", "serve"});
        return CommandLine::parse(options).service.publicURL;
    };
    EXPECT_EQ(urlOf({}), "http://127.0.0.1:8080");
    EXPECT_EQ(urlOf({"--listen", "127.0.0.1:9000"}), "http://127.0.0.1:9000");
    EXPECT_EQ(urlOf({"--listen", "0.0.0.0:80"}), "http://localhost:80");
    EXPECT_EQ(
        urlOf({"--listen", "[::1]:443", "--certificate", "a", "--key", "b"}), "https://[::1]:443");
}

TEST(CommandLineTest, AUserIsNamed) {
    const CommandLine line = CommandLine::parse({"user", "--data", "d", "add", "a@example.org"});
    EXPECT_EQ(line.command, CommandLine::Command::addUser);
    EXPECT_EQ(line.email, "a@example.org");
    EXPECT_EQ(CommandLine::parse({"--help"}).command, CommandLine::Command::help);
}

TEST(CommandLineTest, WhatIsNotUnderstoodIsSaidBeforeAnythingIsDone) {
    struct Case {
        std::vector<std::string> words;
        const char* sentence;
    };
    const Case cases[] = {
        {{}, "There is no such command."},
        {{"--data", "d"}, "There is no such command."},
        {{"--data", "d", "serve", "now"}, "There is no such command."},
        {{"--data", "d", "user", "add"}, "There is no such command."},
        {{"serve"}, "--data is missing."},
        {{"serve", "--data"}, "--data needs a value."},
        {{"--data", "d", "serve", "--quota", "5"}, "There is no option --quota."},
        {{"--data", "d", "serve", "--help"}, "There is no option --help."},
        {{"--data", "d", "serve", "--listen", "8080"}, "--listen takes HOST:PORT."},
        {{"--data", "d", "serve", "--listen", ":8080"}, "--listen takes HOST:PORT."},
        {{"--data", "d", "serve", "--listen", "host:99999"}, "--listen takes HOST:PORT."},
        {{"--data", "d", "serve", "--key", "k"}, "--certificate and --key go together."},
        {{"--data", "d", "serve", "--file-quota", "-1"}, "--file-quota takes whole megabytes."},
        {{"--data", "d", "serve", "--file-quota", "1.5"}, "--file-quota takes whole megabytes."},
        {{"--data", "d", "serve", "--record-quota", "9999999999"},
         "--record-quota takes whole megabytes."},
        {{"--data", "d", "serve", "--record-quota", ""}, "--record-quota takes whole megabytes."},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(testing::PrintToString(one.words));
        try {
            CommandLine::parse(one.words);
            ADD_FAILURE() << "was accepted";
        } catch (const UsageError& error) {
            EXPECT_STREQ(error.what(), one.sentence);
        }
    }
}

}  // namespace
}  // namespace tesserine::server
