#include "cli/CommandFixture.h"

#include <sstream>

namespace tesserine::cli {
namespace {

constexpr const char* id = "AAAA0000-0000-4000-8000-000000000001";

class BatchCommand : public CommandFixture {
protected:
    /// The answers to operations, one for each line.
    std::vector<boost::json::object> batch(const std::string& lines) {
        std::istringstream answers(mustRun({"batch"}, lines).output);
        std::vector<boost::json::object> result;
        for (std::string line; std::getline(answers, line);) {
            result.push_back(tesserine::json::parse(line).as_object());
        }
        return result;
    }

    boost::json::object one(const std::string& line) {
        const auto answers = batch(line + "\n");
        EXPECT_EQ(answers.size(), 1U);
        return answers.empty() ? boost::json::object() : answers.front();
    }

    boost::json::value note() { return mustRun({"note", "show", id, "--json"}).json(); }

    static std::string add(const std::string& rest = {}) {
        return R"({"op": "note.add", "id": ")" + std::string(id) + R"(", "title": "Plan")" + rest
               + "}";
    }
};

TEST_F(BatchCommand, EveryLineIsAnsweredAndARefusalDoesNotEndTheRun) {
    const auto answers = batch(
        add(R"(, "text": "one", "tags": ["x"], "notebook": "Work")") + "\n"
        + "this is not JSON\n"
          "\n"
          "[1, 2]\n"
          R"({"op": "note.fly", "id": "x"})"
          "\n"
          R"({"title": "no operation"})"
          "\n"
          R"({"op": "note.add", "title": 7})"
          "\n"
          R"({"op": "note.add", "tittle": "x"})"
          "\n"
          R"({"op": "note.add", "id": "AAAA"})"
          "\n"
          R"({"op": "note.set", "id": "nobody", "title": "x"})"
          "\n"
          R"({"op": "note.pin", "id": "Plan"})");
    std::vector<std::string> said;
    said.reserve(answers.size());
    for (const auto& answer : answers) {
        said.emplace_back(
            answer.at("ok").as_bool() ? "ok" : std::string(answer.at("error").as_string()));
    }
    EXPECT_EQ(
        said,
        (std::vector<std::string>{
            "ok",
            "The line is not a JSON object.",
            "The line is not a JSON object.",
            "There is no operation “note.fly”.",
            "The field “op” is missing.",
            "The field “title” must be a text.",
            "There is no field “tittle” here.",
            "The field “id” must be a UUID.",
            "The note “nobody” could not be found.",
            "ok"}));
    EXPECT_EQ(shown(note().at("isPinned")), "true");
    EXPECT_EQ(mustRun({"note", "list", "--json"}).json().as_array().size(), 1U);
}

TEST_F(BatchCommand, RepeatingAnOperationIsHarmless) {
    const std::string attach = R"({"op": "attachment.add", "note": ")" + std::string(id)
                               + R"(", "filename": "a.txt", "base64": "aGVsbG8="})";
    const std::string lines = add(R"(, "text": "one")") + "\n" + attach + "\n";
    const auto first = batch(lines);
    const auto version = note().at("contentVersion");
    const auto second = batch(lines);
    EXPECT_EQ(shown(first.at(0).at("id")), shown(second.at(0).at("id")));
    EXPECT_EQ(shown(first.at(1)), shown(second.at(1)));
    EXPECT_EQ(shown(note().at("contentVersion")), shown(version));
    EXPECT_EQ(note().at("attachments").as_array().size(), 1U);

    for (const char* operation : {"note.trash", "note.restore", "note.pin", "note.delete"}) {
        SCOPED_TRACE(operation);
        const std::string line = R"({"op": ")" + std::string(operation) + R"(", "id": ")" + id
                                 + R"("})"
                                   "\n";
        const auto answers = batch(line + line);
        EXPECT_TRUE(answers.at(0).at("ok").as_bool());
        EXPECT_EQ(answers.at(1), answers.at(0));
    }
}

TEST_F(BatchCommand, AnEditOfAnOldVersionKeepsTheOtherBody) {
    one(add(R"(, "text": "one")"));
    const auto set = [&](const std::string& text, int version) {
        return one(
            R"({"op": "note.set", "id": ")" + std::string(id) + R"(", "text": ")" + text
            + R"(", "ifVersion": )" + std::to_string(version) + "}");
    };
    EXPECT_FALSE(set("two", 1).contains("conflict"));
    EXPECT_EQ(shown(note().at("contentVersion")), "2");
    EXPECT_EQ(shown(set("three", 1).at("conflict")), "true");
    EXPECT_EQ(shown(note().at("plainText")), "three");
    EXPECT_EQ(shown(note().at("hasConflict")), "true");
    EXPECT_EQ(mustRun({"note", "revision", id, "1"}).output, "two\n");
    const auto revisions = mustRun({"note", "revisions", id, "--json"}).json();
    EXPECT_EQ(shown(revisions.at(0).at("reason")), "conflict");
}

TEST_F(BatchCommand, AGroupIsSavedWholeOrNotAtAll) {
    const std::string pin = R"({"op": "note.pin", "id": ")" + std::string(id) + R"("})";
    const auto refused =
        one(R"({"op": "group", "ops": [)" + add() + ", " + pin
            + R"(, {"op": "note.pin", "id": "x"}]})");
    EXPECT_EQ(shown(refused.at("ok")), "false");
    EXPECT_EQ(run({"note", "show", id}).status, ExitStatus::failed);

    const auto done = one(R"({"op": "group", "ops": [)" + add() + ", " + pin + "]}");
    EXPECT_EQ(shown(done.at("ok")), "true");
    EXPECT_EQ(done.at("results").as_array().size(), 2U);
    EXPECT_EQ(shown(note().at("isPinned")), "true");
    EXPECT_EQ(
        shown(one(R"({"op": "group", "ops": [{"op": "group", "ops": []}]})").at("ok")), "false");
}

TEST_F(BatchCommand, TextFromOutsideIsMadeCleanAtTheDoor) {
    one(R"({"op": "note.add", "id": ")" + std::string(id)
        + R"(", "title": "a\u0000b\ud83d\ude00", "html": "<script>x</script><p>y"})");
    EXPECT_EQ(shown(note().at("title")), "ab😀");
    EXPECT_EQ(shown(note().at("html")), "<p>y</p>");
    EXPECT_EQ(shown(one("{\"op\": \"note.add\", \"title\": \"\xff\"}").at("ok")), "false");
}

TEST_F(BatchCommand, CtrlCEndsTheRunBetweenTwoOperations) {
    mustRun({"init"});
    stop_.request_stop();
    const CommandResult result = run({"batch"}, add() + "\n");
    EXPECT_EQ(result.status, ExitStatus::interrupted);
    EXPECT_EQ(result.output, "");
}

}  // namespace
}  // namespace tesserine::cli
