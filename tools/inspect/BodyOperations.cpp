#include "core/body/AttributedText.h"
#include "core/body/CanonicalBody.h"
#include "core/body/HTMLNode.h"
#include "core/body/NoteOutline.h"
#include "core/body/PlainText.h"
#include "core/body/Sanitizer.h"
#include "tools/inspect/Operations.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace tesserine::inspect {
namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

value textOrNull(std::optional<std::string_view> text) {
    if (!text) return nullptr;
    return boost::json::string(*text);
}

std::string_view view(const value& text) {
    return {text.get_string().data(), text.get_string().size()};
}

std::size_t limitOf(const object& input) {
    const std::int64_t limit = integer(input, "limit");
    if (limit < 0) throw InputError("“limit” is negative");
    return static_cast<std::size_t>(limit);
}

/// `plaintext.fromHTML`: the text of HTML as it is read, nothing sanitised.
value plainTextOfHTML(const object& input) {
    return boost::json::string(PlainText::fromHTML(text(input, "html")));
}

/// `plaintext.firstLine`: the first line that says something, null for none.
value firstLineOfText(const object& input) {
    const std::string whole = text(input, "text");
    return textOrNull(PlainText::firstLine(whole, limitOf(input)));
}

/// `plaintext.snippet`: the beginning on one line.
value snippetOfText(const object& input) {
    return boost::json::string(PlainText::snippet(text(input, "text"), limitOf(input)));
}

BlockStyle::Kind blockKindNamed(std::string_view name) {
    using Kind = BlockStyle::Kind;
    constexpr std::array<std::pair<std::string_view, Kind>, 10> kinds{
        {{"heading", Kind::heading},
         {"codeBlock", Kind::codeBlock},
         {"bullet", Kind::bullet},
         {"numbered", Kind::numbered},
         {"checklist", Kind::checklist},
         {"preserved", Kind::preserved},
         {"encrypted", Kind::encrypted},
         {"paragraph", Kind::paragraph},
         {"quote", Kind::quote},
         {"divider", Kind::divider}}};
    const auto* const found =
        std::ranges::find(kinds, name, &std::pair<std::string_view, Kind>::first);
    if (found == kinds.end()) throw InputError("“style” is no style of a paragraph");
    return found->second;
}

std::optional<BlockStyle> blockStyleOf(const object& paragraph) {
    const auto name = optionalText(paragraph, "style");
    if (!name) return std::nullopt;
    const std::int64_t level = integer(paragraph, "level", 0);
    if (level < 0 || level > 6) throw InputError("“level” is not within 1 and 6");
    return BlockStyle{blockKindNamed(*name), static_cast<int>(level)};
}

/// `outline.entries`: the headings of an edited text, given as paragraphs.
value outlineOfParagraphs(const object& input) {
    AttributedText edited;
    for (const value& paragraph : elements(input, "paragraphs")) {
        if (!paragraph.is_object()) throw InputError("a paragraph is not an object");
        edited.append(text(paragraph.get_object(), "text"), blockStyleOf(paragraph.get_object()));
    }
    array entries;
    for (const OutlineEntry& entry : NoteOutline::entries(edited)) {
        entries.push_back(
            object{{"level", entry.level}, {"text", entry.text}, {"location", entry.location}});
    }
    return entries;
}

value counts(const SanitizationReport::Counts& counts) {
    object output;
    for (const auto& [name, count] : counts) {
        output[name] = count;
    }
    return output;
}

value sanitized(std::string_view html, const SanitizationReport& report) {
    return object{
        {"html", html},
        {"droppedElements", counts(report.droppedElements)},
        {"unwrappedElements", counts(report.unwrappedElements)}};
}

/// `sanitize.html`: what the note services make of a body.
value sanitizedHTML(const object& input) {
    const CanonicalBody body = canonicalBody(text(input, "html"));
    return sanitized(body.html, body.report);
}

/// Adds nodes given as texts and as arrays [name, attributes?, child…] to a tree.
class TreeReader {
public:
    static HTMLDocument read(const array& nodes) {
        TreeReader reader;
        reader.pending_.push_back({nodes.begin(), nodes.end(), &reader.document_.root()});
        while (!reader.pending_.empty()) {
            reader.readNext();
        }
        return std::move(reader.document_);
    }

private:
    struct Siblings {
        array::const_iterator next;
        array::const_iterator end;
        HTMLNode* parent;
    };

    void readNext() {
        Siblings& siblings = pending_.back();
        if (siblings.next == siblings.end) return pending_.pop_back();
        const value& node = *siblings.next++;
        if (node.is_string()) {
            document_.appendText(*siblings.parent, view(node));
        } else if (node.is_array()) {
            readElement(*siblings.parent, node.get_array());
        } else {
            throw InputError("a node is neither a text nor a list");
        }
    }

    void readElement(HTMLNode& parent, const array& parts) {
        const auto* child = parts.begin();
        if (child == parts.end() || !child->is_string()) {
            throw InputError("an element does not begin with its name");
        }
        const std::string_view name = view(*child++);
        std::vector<HTMLAttribute> attributes;
        if (child != parts.end() && child->is_object()) {
            for (const auto& [key, text] : (child++)->get_object()) {
                if (!text.is_string()) throw InputError("an attribute is not a text");
                attributes.push_back({{key.data(), key.size()}, view(text)});
            }
        }
        HTMLNode& element = document_.appendElement(parent, name, attributes);
        pending_.push_back({child, parts.end(), &element});
    }

    HTMLDocument document_;
    std::vector<Siblings> pending_;
};

/// `sanitize.tree`: the same for the children of a body, given as a tree.
value sanitizedTree(const object& input) {
    const HTMLDocument document = TreeReader::read(elements(input, "tree"));
    const SanitizationResult result = sanitize(document.root());
    return sanitized(result.html, result.report);
}

}  // namespace

void addBodyOperations(Operations& operations) {
    operations.add("outline.entries", outlineOfParagraphs);
    operations.add("plaintext.firstLine", firstLineOfText);
    operations.add("plaintext.fromHTML", plainTextOfHTML);
    operations.add("plaintext.snippet", snippetOfText);
    operations.add("sanitize.html", sanitizedHTML);
    operations.add("sanitize.tree", sanitizedTree);
}

}  // namespace tesserine::inspect
