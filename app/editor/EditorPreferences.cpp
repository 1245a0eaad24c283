#include "app/editor/EditorPreferences.h"

#include "base/Preferences.h"

#include <QFontDatabase>
#include <QStringList>

#include <algorithm>

namespace tesserine::app {

EditorPreferences EditorPreferences::read(const Preferences& preferences) {
    const std::int64_t zoom = preferences.integer(zoomKey).value_or(0);
    return {
        .font = preferences.string(fontKey).value_or(std::string(usual)),
        .zoomStep = static_cast<int>(std::clamp<std::int64_t>(zoom, smallestZoom, largestZoom)),
        .dictionary = preferences.string(spellingKey).value_or(std::string(usual)),
        .showsWordCount = preferences.boolean(wordCountKey).value_or(true),
        .hasShortcuts = preferences.boolean(shortcutsKey).value_or(true)};
}

QFont EditorPreferences::fontLike(const QFont& body) const {
    QFont result = body;
    if (font == serif) {
        result.setFamilies(QStringList{"serif"});
        result.setStyleHint(QFont::Serif);
    } else if (font == monospace) {
        result.setFamilies(QFontDatabase::systemFont(QFontDatabase::FixedFont).families());
    }
    return result;
}

}  // namespace tesserine::app
