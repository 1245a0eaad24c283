#include "cli/Passphrase.h"

#include "base/Files.h"
#include "base/Text.h"
#include "cli/CommandError.h"
#include "cli/Session.h"

#include <algorithm>
#include <istream>
#include <ostream>

namespace tesserine::cli {

namespace {

constexpr std::string_view optionName = "passphrase-file";
constexpr std::size_t mostBytes = 65'536;
constexpr std::ptrdiff_t shortPassphrase = 8;

/// The line without its end, of a file or of standard input.
void dropLineEnd(SecretBytes& line) {
    const std::string_view text = line.text();
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) return;
    line.shrink(end > 0 && text[end - 1] == '\r' ? end - 1 : end);
}

SecretBytes firstLineOf(Session& session, std::istream& input) {
    using Traits = std::istream::traits_type;
    std::streambuf& buffer = *input.rdbuf();
    SecretBytes line;
    while (line.size() < mostBytes) {
        const auto next = buffer.sbumpc();
        if (Traits::eq_int_type(next, Traits::eof())) break;
        const char c = Traits::to_char_type(next);
        line.append({&c, 1});
        if (c == '\n') break;
    }
    session.throwIfStopped();  // Ctrl-C ends the input early
    dropLineEnd(line);
    return line;
}

SecretBytes firstLineOf(const std::filesystem::path& file) {
    Bytes bytes = files::read(file, mostBytes);
    SecretBytes line = SecretBytes::copyOf(bytes);
    wipe(bytes);
    dropLineEnd(line);
    return line;
}

SecretBytes ask(Session& session, std::string_view prompt) {
    const Environment& environment = session.environment();
    environment.error << prompt << std::flush;
    if (environment.showTyping) environment.showTyping(false);
    try {
        SecretBytes line = firstLineOf(session, environment.input);
        if (environment.showTyping) environment.showTyping(true);
        environment.error << '\n';
        return line;
    } catch (...) {
        if (environment.showTyping) environment.showTyping(true);
        throw;
    }
}

SecretBytes askFor(Session& session, PassphraseUse use) {
    if (use == PassphraseUse::isKnown) {
        session.environment().error
            << "Enter the passphrase you set when you encrypted this passage.\n";
        return ask(session, "Passphrase: ");
    }
    SecretBytes passphrase = ask(session, "Passphrase: ");
    const SecretBytes again = ask(session, "Confirm Passphrase: ");
    if (passphrase.text() != again.text()) {
        throw CommandError::badInput("The two passphrases differ, so nothing was changed.");
    }
    return passphrase;
}

bool isShort(const SecretBytes& passphrase) {
    const auto isCharacterStart = [](std::uint8_t byte) { return (byte & 0xC0) != 0x80; };
    return std::ranges::count_if(passphrase.bytes(), isCharacterStart) < shortPassphrase;
}

}  // namespace

Option passphraseOption() {
    return {
        .name = optionName,
        .value = "FILE",
        .summary = "Takes the passphrase from the first line of a file; - is standard input",
        .completion = Completion::file};
}

SecretBytes secretLineFrom(
    Session& session,
    const Arguments& arguments,
    std::string_view fileOption,
    std::string_view prompt) {
    const auto file = arguments.path(fileOption);
    if (file && *file != "-") return firstLineOf(*file);
    if (!file && session.environment().inputIsTerminal) return ask(session, prompt);
    return firstLineOf(session, session.environment().input);
}

SecretBytes passphraseFrom(Session& session, const Arguments& arguments, PassphraseUse use) {
    const auto file = arguments.path(optionName);
    const bool isAsked = !file && session.environment().inputIsTerminal;
    SecretBytes passphrase;
    if (isAsked) {
        passphrase = askFor(session, use);
    } else if (file && *file != "-") {
        passphrase = firstLineOf(*file);
    } else {
        passphrase = firstLineOf(session, session.environment().input);
    }
    if (use == PassphraseUse::isKnown) return passphrase;
    if (passphrase.isEmpty()) throw CommandError::badInput("The passphrase is empty.");
    if (isShort(passphrase)) {
        session.remark("A passphrase of less than 8 characters is easily guessed.");
    }
    return passphrase;
}

Answer askOnTerminal(Session& session, std::string_view question, Answer otherwise) {
    const Environment& environment = session.environment();
    if (!environment.inputIsTerminal || !environment.errorIsTerminal) return otherwise;
    environment.error << question << (otherwise == Answer::yes ? " [Y/n] " : " [y/N] ")
                      << std::flush;
    const SecretBytes line = firstLineOf(session, environment.input);
    const std::string_view answer = text::trimmed(line.text());
    if (answer.empty()) return otherwise;
    return answer.front() == 'y' || answer.front() == 'Y' ? Answer::yes : Answer::no;
}

}  // namespace tesserine::cli
