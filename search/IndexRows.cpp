#include "search/IndexRows.h"

#include "base/Text.h"
#include "search/SearchAnalyzer.h"
#include "search/SearchIndex.h"

#include <utility>

namespace tesserine {
namespace {

std::string joined(const std::vector<std::string>& words, char separator) {
    std::string text;
    for (const std::string& word : words) {
        if (&word != &words.front()) text += separator;
        text += word;
    }
    return text;
}

template <class Fold>
std::string foldedAndJoined(std::vector<std::string> words, char separator, Fold fold) {
    for (std::string& word : words) {
        word = fold(word);
    }
    return joined(words, separator);
}

}  // namespace

IndexRows::IndexRows(IndexDocument from)
    : document(isFit(from) ? std::move(from) : fitted(std::move(from))),
      state(stateOf(document)),
      uid(document.id.text()),
      tags(joined(document.tags, tagSeparator)),
      types(joined(document.attachmentTypes, ' ')),
      titleFold(indexFold(document.title)),
      notebookFold(indexFold(document.notebook)),
      tagsFold(foldedAndJoined(document.tags, tagSeparator, indexFold)),
      typesFold(foldedAndJoined(document.attachmentTypes, ' ', text::lowercased)),
      signature(tesserine::signature(state)),
      tagWords(joined(document.tags, ' ')),
      keys(SearchAnalyzer::keyText({{document.title, document.body, document.attachmentText}})) {
    for (const IndexAttachment& attachment : document.attachments) {
        attachmentKeys.push_back(SearchAnalyzer::keyText({{attachment.text}}));
    }
}

}  // namespace tesserine
