#pragma once

#include <string>
#include <string_view>

namespace tesserine {

/// What the style of an element in Evernote's markup says, as far as a body can hold it.
struct ENMLStyle {
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruck = false;
    bool isHighlighted = false;
    std::string color{};       ///< "#rrggbb" or empty; black, which is written everywhere, is none
    std::string background{};  ///< the same; white is none

    // Evernote's own properties, which say what an element is.
    bool isTodoList = false;
    bool isChecked = false;
    bool isCodeBlock = false;
    bool isTaskGroup = false;
    std::string groupID{};  ///< of tasks
};

/// Reads a `style` attribute. What is not understood is left out.
ENMLStyle enmlStyle(std::string_view style);

}  // namespace tesserine
