#include "app/shell/StartOptions.h"

#include <QRegularExpression>

#include <algorithm>
#include <iterator>

namespace tesserine::app {
namespace {

std::optional<QSize> sizeOf(const QString& text) {
    static const QRegularExpression pattern("^([1-9]\\d{1,4})x([1-9]\\d{1,4})$");
    const auto match = pattern.match(text);
    if (!match.hasMatch()) return std::nullopt;
    return QSize(match.captured(1).toInt(), match.captured(2).toInt());
}

struct Form {
    const char* name;
    const char* value;
};
constexpr Form forms[] = {
    {"--library", "FOLDER"},
    {"--open", "PLACE"},
    {"--theme", "light or dark"},
    {"--size", "WIDTHxHEIGHT"},
    {"--screenshot", "FILE"}};

QString mistakeIn(const QString& word, const QString& name) {
    const auto* const form = std::ranges::find(forms, name, &Form::name);
    if (form == std::end(forms)) {
        return QString("“%1” is no option that Tesserine knows.").arg(word);
    }
    return QString("%1 must be followed by %2.").arg(name, form->value);
}

/// Takes over the value of an option; false where it has none, and for what is no option.
bool take(StartOptions& options, const QString& name, const QString& value) {
    if (value.isEmpty()) return false;
    if (name == "--library") {
        options.library = value.toStdString();
    } else if (name == "--screenshot") {
        options.screenshot = value;
    } else if (name == "--open") {
        options.open = value;
    } else if (name == "--theme" && value == "light") {
        options.scheme = Theme::Scheme::light;
    } else if (name == "--theme" && value == "dark") {
        options.scheme = Theme::Scheme::dark;
    } else if (name == "--size") {
        options.size = sizeOf(value);
        return options.size.has_value();
    } else {
        return false;
    }
    return true;
}

}  // namespace

StartOptions StartOptions::read(const QStringList& words) {
    StartOptions options;
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString& word = words[i];
        if (word == "--help" || word == "-h") {
            options.wantsHelp = true;
        } else if (word == "--version") {
            options.wantsVersion = true;
        } else if (!word.startsWith("--")) {
            options.requests << word;
        } else {
            const qsizetype equals = word.indexOf('=');
            const QString name = word.left(equals);
            const bool isApart = equals < 0 && i + 1 < words.size();
            const QString value = isApart      ? words[++i]
                                  : equals < 0 ? QString()
                                               : word.mid(equals + 1);
            if (!take(options, name, value)) options.mistake = mistakeIn(word, name);
        }
    }
    return options;
}

QString StartOptions::help() {
    return "Usage: tesserine-desktop [options] [address or file …]\n"
           "\n"
           "  --library FOLDER      the library to open\n"
           "  --open PLACE          go there: today, trash, tesserine://note/… and the like\n"
           "  --theme light|dark    instead of the desktop's\n"
           "  --size WIDTHxHEIGHT   of the window\n"
           "  --screenshot FILE     draw one state of the window into FILE, and end\n"
           "  --version, --help\n";
}

}  // namespace tesserine::app
