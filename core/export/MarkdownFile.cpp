#include "core/export/MarkdownFile.h"

#include "base/JSON.h"
#include "core/body/PlainText.h"
#include "core/export/MarkdownEscapes.h"
#include "core/export/MarkdownRenderer.h"
#include "core/export/NoteFacts.h"
#include "core/services/Tree.h"

#include <algorithm>
#include <optional>

namespace tesserine {
namespace {

/// Front matter; a JSON string is a YAML string as well.
class FrontMatter {
public:
    void add(std::string_view key, std::string_view text) { addLine(key, json::quoted(text)); }
    void add(std::string_view key, const std::optional<Instant>& instant) {
        if (instant) addLine(key, instant->iso());
    }
    void addLine(std::string_view key, std::string_view value) {
        text_.append(key).append(": ").append(value).append("\n");
    }
    std::string take() { return "---\n" + text_ + "---\n"; }

private:
    std::string text_;
};

std::string tagList(const CDNote& note, const text::Collator& collator) {
    std::string list;
    for (const std::string& name : tagNames(note, collator)) {
        list += (list.empty() ? "" : ", ") + json::quoted(name);
    }
    return "[" + list + "]";
}

std::string headingOf(std::string title) {
    std::ranges::replace(title, '\n', ' ');
    std::string line = "# ";
    markdown::appendEscaped(line, title, {.hasTildes = true, .hidesAddresses = true});
    if (line.ends_with('#')) line.insert(line.size() - 1, 1, '\\');
    return line;
}

}  // namespace

std::string markdownHeadOf(const CDNote& note, const text::Collator& collator) {
    const std::string title = displayTitle(note.title.valueOr(""), note.plainText.valueOr(""));
    FrontMatter matter;
    matter.add("title", title);
    if (note.id) matter.add("id", note.id->text());
    matter.add("created", note.createdAt.get());
    matter.add("updated", note.updatedAt.get());
    if (!note.tags.empty()) matter.addLine("tags", tagList(note, collator));
    if (const CDNotebook* const notebook = note.notebook) {
        matter.add("notebook", tree::pathText(*notebook));
    }
    if (note.isPinned) matter.addLine("pinned", "true");
    if (note.sourceURL) matter.add("source", *note.sourceURL);
    return matter.take() + "\n" + headingOf(title) + "\n";
}

std::string markdownFileOf(
    const std::string& head, std::string_view html, const AddressMap& addressOf) {
    const std::string body = markdownOf(html, {.headingShift = 1, .addressOf = addressOf});
    return head + (body.empty() ? "" : "\n") + body;
}

}  // namespace tesserine
