#include "search/IndexRows.h"

#include "base/Text.h"
#include "search/SearchAnalyzer.h"
#include "search/SearchIndex.h"

#include <utility>

namespace tesserine {
namespace {

constexpr std::string_view betweenTags(&tagSeparator, 1);

template <class Fold>
std::string foldedAndJoined(std::vector<std::string> words, std::string_view separator, Fold fold) {
    for (std::string& word : words) {
        word = fold(word);
    }
    return text::joined(words, separator);
}

}  // namespace

IndexRows::IndexRows(IndexDocument from)
    : document(isFit(from) ? std::move(from) : fitted(std::move(from))),
      state(stateOf(document)),
      uid(document.id.text()),
      tags(text::joined(document.tags, betweenTags)),
      types(text::joined(document.attachmentTypes, " ")),
      titleFold(indexFold(document.title)),
      notebookFold(indexFold(document.notebook)),
      tagsFold(foldedAndJoined(document.tags, betweenTags, indexFold)),
      typesFold(foldedAndJoined(document.attachmentTypes, " ", text::lowercased)),
      signature(tesserine::signature(state)),
      tagWords(text::joined(document.tags, " ")),
      keys(SearchAnalyzer::keyText({{document.title, document.body, document.attachmentText}})) {
    for (const IndexAttachment& attachment : document.attachments) {
        attachmentKeys.push_back(SearchAnalyzer::keyText({{attachment.text}}));
    }
}

}  // namespace tesserine
