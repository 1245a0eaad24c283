#include "ai/AnswerBody.h"

#include "base/Text.h"
#include "core/body/HTMLSerializer.h"

#include <algorithm>
#include <optional>

namespace tesserine {
namespace {

/// What follows "- ", "* " or "• "; none for any other line.
std::optional<std::string_view> bulleted(std::string_view line) {
    for (const std::string_view mark : {"- ", "* ", "• "}) {
        if (line.starts_with(mark)) return text::trimmed(line.substr(mark.size()));
    }
    return std::nullopt;
}

/// An item that the model ticked or left open, "[ ] call", without the box.
std::string_view withoutBox(std::string_view item) {
    for (const std::string_view box : {"[ ] ", "[x] ", "[X] "}) {
        if (item.starts_with(box)) return item.substr(box.size());
    }
    return item;
}

/// Writes lines as blocks, list items side by side into one list.
class BodyLines {
public:
    explicit BodyLines(bool isChecklist) : isChecklist_(isChecklist) {}

    void add(std::string_view line) {
        line = text::trimmed(line);
        if (line.empty()) return closeList();
        if (const auto item = bulleted(line)) return addItem(*item);
        closeList();
        html_ += "<p>";
        html::appendEscapedText(html_, line);
        html_ += "</p>";
    }
    std::string finish() {
        closeList();
        return std::move(html_);
    }

private:
    void addItem(std::string_view item) {
        if (!isInList_) html_ += isChecklist_ ? R"(<ul class="ts-checklist">)" : "<ul>";
        isInList_ = true;
        html_ += isChecklist_ ? R"(<li data-checked="false">)" : "<li>";
        html::appendEscapedText(html_, isChecklist_ ? withoutBox(item) : item);
        html_ += "</li>";
    }
    void closeList() {
        if (isInList_) html_ += "</ul>";
        isInList_ = false;
    }

    const bool isChecklist_;
    bool isInList_ = false;
    std::string html_;
};

}  // namespace

std::string answerBody(NoteAction action, std::string_view answer) {
    BodyLines lines(action == NoteAction::extractActionItems);
    while (!answer.empty()) {
        const std::size_t end = std::min(answer.find('\n'), answer.size());
        lines.add(answer.substr(0, end));
        answer.remove_prefix(std::min(end + 1, answer.size()));
    }
    return lines.finish();
}

}  // namespace tesserine
