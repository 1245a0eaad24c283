#include "app/editor/EditorSettings.h"

#include "app/editor/EditorPreferences.h"
#include "app/editor/SpellChecker.h"
#include "app/look/SettingsForm.h"
#include "app/state/AppEnvironment.h"

#include <QLocale>

#include <string>
#include <vector>

namespace tesserine::app {
namespace {

using Preference = EditorPreferences;

std::string word(std::string_view value) { return std::string(value); }

/// "British English (en_GB)"
QString languageTitle(const QString& dictionary) {
    const QLocale locale(dictionary);
    const QString language = QLocale::languageToString(locale.language());
    if (locale.language() == QLocale::C) return dictionary;
    return language + " (" + dictionary + ")";
}

std::vector<SettingsForm::Option> zoomOptions() {
    std::vector<SettingsForm::Option> options;
    for (int step = Preference::smallestZoom; step <= Preference::largestZoom; ++step) {
        const auto number = step == 0 ? std::optional<int>() : step;
        options.push_back({QString("%1 %").arg(100 + 10 * step), number});
    }
    return options;
}

std::vector<SettingsForm::WordOption> spellingOptions() {
    std::vector<SettingsForm::WordOption> options{
        {"As the desktop", word(Preference::usual)}, {"Off", word(Preference::off)}};
    for (const QString& name : SpellChecker::dictionaries(SpellChecker::usualFolders())) {
        options.push_back({languageTitle(name), name.toStdString()});
    }
    return options;
}

}  // namespace

QWidget* makeEditorSettings(AppEnvironment& environment, QWidget* parent) {
    auto* const page = new SettingsForm("Editor", environment.preferences(), parent);
    page->setObjectName("editorSettings");
    page->addChoice(
        word(Preference::fontKey),
        {"Font of notes", {}},
        std::vector<SettingsForm::WordOption>{
            {"As the desktop", word(Preference::usual)},
            {"With serifs", word(Preference::serif)},
            {"Of a typewriter", word(Preference::monospace)}});
    page->addChoice(
        word(Preference::zoomKey),
        {"Text size", "Ctrl and plus or minus change it while you write."},
        zoomOptions());
    page->addSwitch(
        word(Preference::wordCountKey),
        {"Count words", "Of the note, or of what is selected."},
        true);
    page->addHeading("While typing");
    page->addChoice(
        word(Preference::spellingKey),
        {"Check spelling", "With the dictionaries that are installed."},
        spellingOptions());
    page->addSwitch(
        word(Preference::shortcutsKey),
        {"Signs make styles",
         "“# ” begins a heading, “- ” a list, “[] ” a checklist, “> ” a quote, “```” code."},
        true);
    return page;
}

}  // namespace tesserine::app
