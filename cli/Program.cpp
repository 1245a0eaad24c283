#include "cli/Program.h"

#include "base/OperationCancelled.h"
#include "base/Product.h"
#include "cli/DisplayText.h"
#include "cli/Help.h"
#include "cli/Session.h"
#include "core/store/StoreError.h"

#include <new>
#include <ostream>

namespace tesserine::cli {

namespace {

/// What the build asks for, to install it: not a command for people.
constexpr std::string_view generateOption = "--generate";

ExitStatus generate(const std::vector<std::string>& line, Environment& environment) {
    const std::string what = line.size() == 2 ? line[1] : std::string();
    if (what == "man") {
        environment.output << manualPage();
    } else if (what == "bash") {
        environment.output << bashCompletion();
    } else if (what == "zsh") {
        environment.output << zshCompletion();
    } else if (what == "fish") {
        environment.output << fishCompletion();
    } else {
        throw UsageError::badValue(std::string(generateOption), "man, bash, zsh or fish");
    }
    return ExitStatus::done;
}

ExitStatus help(const ParsedLine& parsed, Environment& environment) {
    if (parsed.command != nullptr) {
        environment.output << commandHelp(*parsed.command);
    } else if (!parsed.group.empty()) {
        environment.output << groupHelp(parsed.group);
    } else {
        environment.output << overallHelp();
    }
    return ExitStatus::done;
}

ExitStatus run(const Command& command, const Arguments& arguments, Environment& environment) {
    Session session(environment, arguments, command.access);
    const ExitStatus status = command.run(session, arguments);
    session.output().flush();
    return status;
}

/// Without a command: the window where there is a display, else the overview.
ExitStatus runWithoutCommand(const Arguments& arguments, Environment& environment) {
    const bool hasDisplay =
        environment.variable("WAYLAND_DISPLAY") || environment.variable("DISPLAY");
    if (hasDisplay && !arguments.has("json") && environment.openWindow) environment.openWindow();
    return run(*findCommand("overview"), arguments, environment);
}

ExitStatus dispatch(const std::vector<std::string>& line, Environment& environment) {
    if (!line.empty() && line[0] == generateOption) return generate(line, environment);
    const ParsedLine parsed = parseLine(line);
    if (parsed.wantsVersion) {
        environment.output << "Tesserine " << product::version << "\n";
        return ExitStatus::done;
    }
    if (parsed.wantsHelp) return help(parsed, environment);
    if (parsed.command == nullptr) return runWithoutCommand(parsed.arguments, environment);
    return run(*parsed.command, parsed.arguments, environment);
}

/// The sentence on standard error; a terminal gets it without controls.
ExitStatus fail(Environment& environment, ExitStatus status, std::string_view sentence) {
    environment.error << (environment.errorIsTerminal ? harmless(sentence) : std::string(sentence))
                      << '\n';
    return status;
}

ExitStatus dispatchSafely(const std::vector<std::string>& line, Environment& environment) {
    try {
        const ExitStatus status = dispatch(line, environment);
        environment.output.flush();
        return status;
    } catch (const Interrupted&) {
        return ExitStatus::interrupted;
    } catch (const OperationCancelled&) {
        return ExitStatus::interrupted;
    } catch (const UsageError& error) {
        return fail(environment, ExitStatus::usage, error.what());
    } catch (const NoLibrary& error) {
        return fail(environment, ExitStatus::noLibrary, error.what());
    } catch (const LibraryFolderError& error) {
        return fail(environment, ExitStatus::noLibrary, error.what());
    } catch (const StoreError& error) {
        const bool isLibrary = error.kind() == StoreError::Kind::loadFailed;
        return fail(
            environment, isLibrary ? ExitStatus::noLibrary : ExitStatus::failed, error.what());
    } catch (const OutputError& error) {
        // "tesserine note list | head": the reader has what it wanted.
        if (error.kind() == OutputError::Kind::closed) return ExitStatus::done;
        return fail(environment, ExitStatus::failed, error.what());
    } catch (const UserError& error) {
        return fail(environment, ExitStatus::failed, error.what());
    } catch (const std::bad_alloc&) {
        return fail(environment, ExitStatus::failed, "There is not enough memory for this.");
    } catch (const std::exception& error) {
        return fail(
            environment,
            ExitStatus::failed,
            std::string("Something unexpected went wrong (") + error.what() + ").");
    }
}

}  // namespace

ExitStatus runCommand(const std::vector<std::string>& line, Environment& environment) {
    const ExitStatus status = dispatchSafely(line, environment);
    try {
        // After a failure there may be answers that were given before it.
        environment.output.flush();
        environment.error.flush();
    } catch (const std::exception&) {
        return status;  // nobody is left to be told
    }
    return status;
}

}  // namespace tesserine::cli
