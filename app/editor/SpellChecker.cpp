#include "app/editor/SpellChecker.h"

#include <hunspell/hunspell.hxx>
#include <QDir>
#include <QFileInfo>

#include <optional>

namespace tesserine::app {
namespace {

constexpr std::size_t mostKnown = 50'000;
constexpr qsizetype mostSuggestions = 8;

/// The path of a dictionary without its ending.
std::optional<QString> dictionaryFor(const QString& language, const QStringList& folders) {
    QString name = language.section('.', 0, 0).replace('-', '_');
    if (name.isEmpty() || name == "C" || name == "POSIX") name = "en_US";
    const QString prefix = name.section('_', 0, 0) + "_*.dic";
    for (const QString& folder : folders) {
        const QString exact = folder + "/" + name;
        if (QFileInfo::exists(exact + ".dic") && QFileInfo::exists(exact + ".aff")) return exact;
    }
    for (const QString& folder : folders) {
        const QStringList similar = QDir(folder).entryList({prefix}, QDir::Files, QDir::Name);
        if (!similar.isEmpty()) return folder + "/" + similar.front().chopped(4);
    }
    return {};
}

}  // namespace

SpellChecker::SpellChecker(const std::string& language, const QStringList& folders) {
    const auto path = dictionaryFor(QString::fromStdString(language), folders);
    if (!path) return;
    const std::string file = path->toStdString();
    dictionary_ = std::make_unique<Hunspell>((file + ".aff").c_str(), (file + ".dic").c_str());
    isUTF8_ = dictionary_->get_dict_encoding() == "UTF-8";
}

SpellChecker::~SpellChecker() = default;

QStringList SpellChecker::usualFolders() {
    return {"/usr/share/hunspell", "/usr/share/myspell/dicts", "/usr/local/share/hunspell"};
}

QStringList SpellChecker::dictionaries(const QStringList& folders) {
    QStringList names;
    for (const QString& folder : folders) {
        for (const QString& file : QDir(folder).entryList({"*.dic"}, QDir::Files)) {
            const QString name = file.chopped(4);
            // Others, such as those for hyphenation, have no rules beside them.
            if (QFileInfo::exists(folder + "/" + name + ".aff")) names.append(name);
        }
    }
    names.removeDuplicates();
    names.sort();
    return names;
}

bool SpellChecker::isCorrect(const QString& word) {
    if (!isOn()) return true;
    const std::string key = word.toStdString();
    if (const auto known = known_.find(key); known != known_.end()) return known->second;
    if (known_.size() >= mostKnown) known_.clear();
    const bool isCorrect = dictionary_->spell(encoded(word));
    known_.emplace(key, isCorrect);
    return isCorrect;
}

QStringList SpellChecker::suggestions(const QString& word) {
    QStringList words;
    if (!isOn()) return words;
    for (const std::string& suggestion : dictionary_->suggest(encoded(word))) {
        if (words.size() == mostSuggestions) break;
        words.append(
            isUTF8_ ? QString::fromStdString(suggestion) : QString::fromLatin1(suggestion.c_str()));
    }
    return words;
}

void SpellChecker::accept(const QString& word) {
    if (!isOn()) return;
    dictionary_->add(encoded(word));
    known_.clear();
}

/// Dictionaries that are not in UTF-8 are taken for Latin-1, which the western ones are.
std::string SpellChecker::encoded(const QString& word) const {
    return isUTF8_ ? word.toStdString() : word.toLatin1().toStdString();
}

}  // namespace tesserine::app
