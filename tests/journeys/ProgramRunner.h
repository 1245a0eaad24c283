#pragma once

#include "tests/support/TemporaryFolder.h"

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tesserine::test {

/// How a program ended and what it wrote.
struct Outcome {
    int status = -1;  ///< its exit status; 128 + n when signal n ended it
    std::string output;
    std::string error;
};

/// What a program that runs beside the test is talked to through.
enum class Channel {
    pipes,     ///< standard input and output; errors go where the test's own go
    terminal,  ///< all three, as when somebody types
};

/// A program that runs beside the test; killed when it goes away.
class RunningProgram {
public:
    RunningProgram(
        const std::vector<std::string>& words,
        const std::map<std::string, std::string>& variables,
        Channel channel = Channel::pipes);
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;
    ~RunningProgram();

    /// Writes to its standard input. False when it reads no more.
    bool write(const std::string& text) const;
    void closeInput();
    /// The next line of its standard output; none at the end.
    std::optional<std::string> readLine();
    /// Reads until `text` was written; false at the end.
    bool readUntil(const std::string& text);
    void closeOutput();
    void signal(int number) const;
    int wait();

private:
    bool readMore();

    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string unread_;
};

/// Runs the real program on a library and a home of its own.
class ProgramRunner {
public:
    ProgramRunner();

    Outcome run(const std::vector<std::string>& words, const std::string& input = {}) const;
    /// The same, with standard output going to `target`, such as /dev/full; "-" closes it.
    Outcome runInto(const std::string& target, const std::vector<std::string>& words) const;
    /// The same as a user who is not root, to whom everything in the folder is given first.
    Outcome runUnprivileged(const std::vector<std::string>& words) const;
    std::vector<std::string> commandLine(const std::vector<std::string>& words) const;

    std::filesystem::path folder() const { return folder_.path(); }
    std::filesystem::path library() const { return folder_ / "library"; }
    std::filesystem::path libraryFile() const { return library() / "Tesserine.sqlite"; }
    const std::map<std::string, std::string>& variables() const { return variables_; }

private:
    Outcome runShell(const std::string& script, const std::vector<std::string>& words) const;

    TemporaryFolder folder_;
    std::map<std::string, std::string> variables_;
};

}  // namespace tesserine::test
