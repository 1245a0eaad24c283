#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <string>
#include <unordered_map>

class Hunspell;

namespace tesserine::app {

/// Tells which words are misspelt, by a dictionary of the machine. Without one every word is right.
///
/// Keeps what it found out about a word. Belongs to one thread at a time.
class SpellChecker {
public:
    /// `language` is a locale such as "en_GB"; its dictionary, or one of the same language, is
    /// looked for in `folders`. The locales that name no language, such as "C", are in English.
    SpellChecker(const std::string& language, const QStringList& folders);
    SpellChecker(const SpellChecker&) = delete;
    SpellChecker& operator=(const SpellChecker&) = delete;
    ~SpellChecker();

    /// Where dictionaries stand on this machine.
    static QStringList usualFolders();
    /// The names of all dictionaries there, such as "en_GB", sorted.
    static QStringList dictionaries(const QStringList& folders);

    bool isOn() const { return dictionary_ != nullptr; }
    bool isCorrect(const QString& word);
    /// At most eight, the likeliest first.
    QStringList suggestions(const QString& word);
    /// Counts as correct until the program ends.
    void accept(const QString& word);

private:
    std::string encoded(const QString& word) const;

    std::unique_ptr<Hunspell> dictionary_;
    bool isUTF8_ = true;
    std::unordered_map<std::string, bool> known_;
};

}  // namespace tesserine::app
