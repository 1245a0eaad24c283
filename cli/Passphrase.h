#pragma once

#include "base/SecretBytes.h"
#include "cli/Command.h"

#include <string_view>

namespace tesserine::cli {

class Arguments;
class Session;

/// The option by which a passphrase is given in a file. None is ever taken from the command line,
/// where other users and the history of a shell would see it.
Option passphraseOption();

/// A secret in one line, taken as a passphrase is: from the file that `fileOption` names, asked for
/// with `prompt` on a terminal, or from standard input.
SecretBytes secretLineFrom(
    Session& session,
    const Arguments& arguments,
    std::string_view fileOption,
    std::string_view prompt);

enum class PassphraseUse {
    isNew,    ///< asked for twice, and not empty
    isKnown,  ///< asked for once
};

/// The first line of the file that --passphrase-file names ("-" is standard input). Without that
/// option it is asked for on a terminal, which does not show it, and else it is the first line of
/// standard input. Throws `CommandError`, `FileError` and `Interrupted`.
SecretBytes passphraseFrom(Session& session, const Arguments& arguments, PassphraseUse use);

/// Asks a question on the terminal, to be answered with yes or no. Without one, or for an empty
/// answer, it is `otherwise`.
enum class Answer { no, yes };
Answer askOnTerminal(Session& session, std::string_view question, Answer otherwise);

}  // namespace tesserine::cli
