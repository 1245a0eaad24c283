#include "app/search/SearchWords.h"

#include "search/SearchResponse.h"

#include <QStringList>

namespace tesserine::app {

QString changesOf(const SearchResponse& response) {
    if (response.showingCloseMatches) {
        QStringList typed;
        QStringList suggestions;
        for (const SearchCorrection& correction : response.corrections) {
            typed << QString::fromStdString(correction.typed).toHtmlEscaped();
            suggestions << QString::fromStdString(correction.suggestion).toHtmlEscaped();
        }
        return QString("Searching for <b>%1</b>; search instead for <a href=\"exact\">%2</a>.")
            .arg(suggestions.join(' '), typed.join(' '));
    }
    if (response.matchedPartsOfWords) {
        return "Nothing holds these words; these hold them within other words.";
    }
    if (!response.matchedSomeTermsOnly) return {};
    if (!response.relaxation) {
        return "Nothing holds all of these words; these hold some of them.";
    }
    return QString("Nothing holds all of these words; these are without <b>%1</b>.")
        .arg(QString::fromStdString(response.relaxation->droppedTerm).toHtmlEscaped());
}

}  // namespace tesserine::app
