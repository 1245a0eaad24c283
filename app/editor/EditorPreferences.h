#pragma once

#include <QFont>

#include <string>
#include <string_view>

namespace tesserine {
class Preferences;
}

namespace tesserine::app {

/// What a person chose about writing.
struct EditorPreferences {
    static constexpr std::string_view fontKey = "tesserine.editor.font";
    static constexpr std::string_view zoomKey = "tesserine.editor.zoomStep";
    static constexpr std::string_view spellingKey = "tesserine.editor.spelling";
    static constexpr std::string_view wordCountKey = "tesserine.editor.wordCount";
    static constexpr std::string_view shortcutsKey = "tesserine.editor.typingShortcuts";
    /// Values of `fontKey` and `spellingKey` besides the names of fonts and dictionaries.
    static constexpr std::string_view usual = "usual";
    static constexpr std::string_view serif = "serif";
    static constexpr std::string_view monospace = "monospace";
    static constexpr std::string_view off = "off";

    static constexpr int smallestZoom = -5;
    static constexpr int largestZoom = 15;

    static EditorPreferences read(const Preferences& preferences);
    /// The font for words, in the size of `body`.
    QFont fontLike(const QFont& body) const;

    std::string font;
    int zoomStep = 0;        ///< tenths above the usual size
    std::string dictionary;  ///< such as "en_GB", `usual` or `off`
    bool showsWordCount = true;
    bool hasShortcuts = true;  ///< "# " begins a heading, "- " a list

    friend bool operator==(const EditorPreferences&, const EditorPreferences&) = default;
};

}  // namespace tesserine::app
