#include "core/import/ENMLConverter.h"

#include "base/Text.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/Sanitizer.h"
#include "core/import/ENMLStyle.h"
#include "core/import/ENMLTodos.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {
namespace {

using Attributes = std::vector<HTMLAttribute>;

constexpr std::string_view noteScheme = "evernote:";
constexpr std::size_t mostLinkTextBytes = 2'000;

bool isNoteLink(const HTMLNode& link) {
    const std::string_view address = text::trimmed(link.attribute("href").value_or(""));
    return text::asciiLowercased(address.substr(0, noteScheme.size())) == noteScheme;
}

bool isRemote(std::string_view address) {
    const std::string begin = text::asciiLowercased(text::trimmed(address).substr(0, 8));
    return begin.starts_with("http://") || begin.starts_with("https://");
}

bool isList(const HTMLNode& node) {
    return node.element() == HTMLElement::ul || node.element() == HTMLElement::ol;
}

/// The text of a link, or its beginning when it is longer than any title.
std::string textOf(const HTMLNode& link) {
    struct Reader {
        void enter(const HTMLNode& node) {
            if (text.size() < mostLinkTextBytes) text += node.text();
        }
        void leave(const HTMLNode&) {}

        std::string text;
    };
    Reader reader;
    walk(link, reader);
    return text::collapsed(reader.text);
}

/// "3 encrypted parts": how often a thing was lost, for a warning.
struct Loss {
    std::size_t count = 0;
    const char* one;
    const char* several;  // follows the number

    void tell(std::vector<std::string>& warnings) const {
        if (count == 1) warnings.emplace_back(one);
        if (count > 1) warnings.push_back(std::to_string(count) + several);
    }
};

/// Lines of a code block, each of which is a block of its own.
class CodeLines {
public:
    void begin() { isAtEnd_ = false; }
    void end() {
        if (!isAtEnd_) text_ += '\n';
        isAtEnd_ = true;
    }
    void add(std::string_view text) {
        text_ += text;
        isAtEnd_ = false;
    }
    std::string_view text() const {
        const bool hasLast = isAtEnd_ && !text_.empty();
        return std::string_view(text_).substr(0, text_.size() - (hasLast ? 1 : 0));
    }

private:
    std::string text_;
    bool isAtEnd_ = false;  // nothing was said since a line ended
};

class Converter {
public:
    Converter(const HTMLDocument& enml, ENMLReferences& references, bool keepsRemoteImages)
        : todos_(enml), references_(references), keepsRemoteImages_(keepsRemoteImages) {}

    void enter(const HTMLNode& node);
    void leave(const HTMLNode& node);

    const std::string& html() const { return written_.html(); }
    void tellLosses(std::vector<std::string>& warnings) const {
        for (const Loss& loss : {missing_, encrypted_, links_, deep_}) {
            loss.tell(warnings);
        }
    }

private:
    enum class List : std::uint8_t { none, plain, checklist };
    /// What becomes of what an element holds: it is written; left out; or it is code, where a block
    /// is a line and anything else a part of one.
    enum class Use : std::uint8_t { open, left, code, codeLine, codePart };

    /// An open element and what was written for it.
    struct Frame {
        const HTMLNode* node = nullptr;
        Use use = Use::open;
        std::size_t written = 0;    // elements
        List list = List::none;     // that is open for consecutive children
        bool isItem = false;        // of a checklist
        bool hasLooseItem = false;  // one without a block of its own is open in `list`
        bool owesBreak = false;     // a line break that is left out when a check box follows
    };

    void open(const HTMLNode& node, Frame& frame);
    void openBlock(const HTMLNode& node, Frame& frame);
    void openInline(const HTMLNode& node, Frame& frame);
    void openLink(const HTMLNode& link, Frame& frame);
    void openItem(bool isChecked);
    void takeBox(const HTMLNode& box);
    void takeBreak();
    void takeImage(const HTMLNode& image);
    void takeFile(const HTMLNode& media);
    void takeText(const HTMLNode& node);
    void takeCode(const HTMLNode& node, Frame& frame);

    List listFor(const HTMLNode& child, const Frame& parent) const;
    void enterList(List wanted, Frame& parent);
    void leaveList(Frame& parent);
    void payBreak(Frame& parent);

    void write(const HTMLNode& node, Frame& frame, bool hasStyle);
    void write(HTMLElement element, Frame& frame, const Attributes& attributes = {});
    void unsupported(std::string_view text);
    void writeText(std::string_view text) { written_.text(text); }

    const ENMLTodos todos_;
    ENMLReferences& references_;
    const bool keepsRemoteImages_;
    HTMLSerializer written_;
    std::vector<Frame> frames_;
    CodeLines code_;

    Loss missing_{
        0,
        "A file that the text shows is not in the export.",
        " files that the text shows are not in the export."};
    Loss encrypted_{
        0,
        "An encrypted part could not be taken over; it is kept in the original source.",
        " encrypted parts could not be taken over; they are kept in the original source."};
    Loss links_{
        0,
        "A link to a note that is not clearly one of this import became text.",
        " links to notes that are not clearly some of this import became text."};
    Loss deep_{
        0,
        "A part was nested too deep; its text was kept.",
        " parts were nested too deep; their text was kept."};
};

void Converter::enter(const HTMLNode& node) {
    if (node.kind() == HTMLNode::Kind::text) return takeText(node);
    if (node.kind() == HTMLNode::Kind::comment) return;
    Frame frame{.node = &node};
    if (node.kind() == HTMLNode::Kind::fragment) return frames_.push_back(frame);
    if (frames_.back().use == Use::left) {
        frame.use = Use::left;
    } else if (frames_.back().use == Use::open) {
        open(node, frame);
    } else {
        takeCode(node, frame);
    }
    frames_.push_back(frame);
    if (std::cmp_equal(frames_.size(), SanitizerOptions{}.maximumDepth + 2)) ++deep_.count;
}

void Converter::leave(const HTMLNode& node) {
    if (node.kind() != HTMLNode::Kind::element && node.kind() != HTMLNode::Kind::fragment) return;
    leaveList(frames_.back());
    if (!frames_.back().isItem) payBreak(frames_.back());
    const Frame frame = frames_.back();
    frames_.pop_back();
    if (frame.use == Use::codeLine) code_.end();
    if (frame.use == Use::code) {
        written_.open(HTMLElement::pre, "pre", {});
        writeText(code_.text());
        written_.close();
        code_ = {};
    }
    for (std::size_t i = 0; i < frame.written; ++i) {
        written_.close();
    }
}

void Converter::open(const HTMLNode& node, Frame& frame) {
    frame.use = Use::left;
    if (ENMLTodos::isBox(node)) return takeBox(node);
    if (node.element() == HTMLElement::br) return takeBreak();
    // A line goes on after its box; a block ends it.
    Frame& parent = frames_.back();
    const bool isBlock = html::has(node.element(), html::isBlock);
    if (isBlock || !parent.hasLooseItem) enterList(listFor(node, parent), parent);
    payBreak(parent);
    if (node.name() == "en-media") return takeFile(node);
    if (node.element() == HTMLElement::img) return takeImage(node);
    if (node.name() == "en-crypt") {
        ++encrypted_.count;
        return unsupported("Encrypted in Evernote");
    }
    frame.use = Use::open;
    if (node.element() == HTMLElement::a) return openLink(node, frame);
    isBlock ? openBlock(node, frame) : openInline(node, frame);
}

void Converter::openBlock(const HTMLNode& node, Frame& frame) {
    if (const bool* isChecked = todos_.item(node)) {
        frame.isItem = true;
        frame.written = 1;
        return openItem(*isChecked);
    }
    const ENMLStyle style = enmlStyle(node.attribute("style").value_or(""));
    if (frames_.back().list == List::checklist && node.element() == HTMLElement::li) {
        frame.written = 1;
        return openItem(style.isChecked);
    }
    if (style.isCodeBlock) {
        frame.use = Use::code;
    } else if (style.isTaskGroup) {
        frame.use = Use::left;
        written_.storedForm(references_.taskGroup(style.groupID));
    } else if (!isList(node) && !todos_.isWrapper(node)) {
        write(node, frame, true);  // a list is opened by its first item
    }
}

void Converter::openInline(const HTMLNode& node, Frame& frame) {
    const bool isOwn =
        node.element() == HTMLElement::other || node.element() == HTMLElement::enNote;
    if (isOwn) return;
    const bool isBare = node.element() == HTMLElement::span || node.element() == HTMLElement::font;
    if (!isBare) write(node, frame, false);
    const ENMLStyle style = enmlStyle(node.attribute("style").value_or(""));
    if (style.isBold) write(HTMLElement::strong, frame);
    if (style.isItalic) write(HTMLElement::em, frame);
    if (style.isUnderlined) write(HTMLElement::u, frame);
    if (style.isStruck) write(HTMLElement::s, frame);

    std::string color = style.color;
    if (color.empty()) color = node.attribute("color").value_or("");
    std::string css = color.empty() ? "" : "color: " + color;
    if (!style.background.empty()) {
        css += (css.empty() ? "" : "; ") + ("background-color: " + style.background);
    }
    const bool isMarked = style.isHighlighted || !style.background.empty();
    if (isMarked || !css.empty()) {
        const HTMLElement element = isMarked ? HTMLElement::mark : HTMLElement::span;
        write(element, frame, css.empty() ? Attributes{} : Attributes{{"style", css}});
    }
}

void Converter::openLink(const HTMLNode& link, Frame& frame) {
    if (!isNoteLink(link)) {
        write(link, frame, false);
        return;
    }
    if (const auto address = references_.noteAddress(textOf(link))) {
        write(HTMLElement::a, frame, {{"href", *address}});
    } else {
        ++links_.count;
    }
}

void Converter::openItem(bool isChecked) {
    const std::array<HTMLAttribute, 1> checked{{{"data-checked", isChecked ? "true" : "false"}}};
    written_.open(HTMLElement::li, "li", checked);
}

/// A box that made its block an item is said already. Another one begins an item of its own where
/// it stands in no other element; elsewhere a sign stands for it.
void Converter::takeBox(const HTMLNode& box) {
    if (todos_.isTaken(box)) return;
    Frame& parent = frames_.back();
    const bool isInLine = parent.node->kind() == HTMLNode::Kind::element
                          && parent.node->element() != HTMLElement::enNote
                          && !html::has(parent.node->element(), html::isBlock);
    if (isInLine) return writeText(ENMLTodos::isChecked(box) ? "☑ " : "☐ ");
    parent.owesBreak = false;
    if (parent.isItem) {
        leaveList(parent);
        written_.close();
    } else {
        enterList(List::checklist, parent);
        if (parent.hasLooseItem) written_.close();
        parent.hasLooseItem = true;
    }
    openItem(ENMLTodos::isChecked(box));
}

void Converter::takeBreak() {
    Frame& parent = frames_.back();
    if (parent.hasLooseItem) {
        written_.close();
        parent.hasLooseItem = false;
        return;
    }
    leaveList(parent);
    payBreak(parent);
    parent.owesBreak = true;
}

void Converter::takeImage(const HTMLNode& image) {
    const std::string_view address = image.attribute("src").value_or("");
    const std::string_view alternative = image.attribute("alt").value_or("");
    const std::string_view shown = text::isBlank(alternative) ? "Image" : alternative;
    Frame frame;
    if (!isRemote(address)) {
        write(HTMLElement::span, frame, {{"class", "ts-unsupported"}});
        writeText(shown);
    } else if (keepsRemoteImages_) {
        write(image, frame, false);
    } else {
        write(HTMLElement::a, frame, {{"href", address}});
        writeText(shown);
    }
    written_.close();
}

void Converter::takeFile(const HTMLNode& media) {
    const std::string md5 =
        text::asciiLowercased(text::trimmed(media.attribute("hash").value_or("")));
    if (const auto element = references_.file(md5)) return written_.storedForm(*element);
    ++missing_.count;
    unsupported("Missing attachment");
}

void Converter::takeText(const HTMLNode& node) {
    Frame& parent = frames_.back();
    const bool isBlank = text::isBlank(node.text());
    switch (parent.use) {
    case Use::left: return;
    case Use::code:
        if (isBlank && node.text().find('\n') != std::string_view::npos) return;
        [[fallthrough]];
    case Use::codeLine:
    case Use::codePart: return code_.add(node.text());
    case Use::open: break;
    }
    const bool isBetweenItems = parent.list != List::none && !parent.hasLooseItem;
    if (isBlank && (isBetweenItems || listFor(node, parent) != List::none)) return;
    if (!parent.hasLooseItem) enterList(listFor(node, parent), parent);
    payBreak(parent);
    writeText(node.text());
}

void Converter::takeCode(const HTMLNode& node, Frame& frame) {
    const bool isBlock = html::has(node.element(), html::isBlock);
    frame.use = isBlock ? Use::codeLine : Use::codePart;
    if (isBlock) code_.begin();
    if (node.element() != HTMLElement::br) return;
    const bool isAlone = node.parent()->firstChild() == &node && node.nextSibling() == nullptr;
    const bool isEmptyLine = isAlone && frames_.back().use == Use::codeLine;
    if (!isEmptyLine) code_.add("\n");
}

/// Which list has to be open in `parent` for this child of it.
Converter::List Converter::listFor(const HTMLNode& child, const Frame& parent) const {
    if (todos_.item(child) != nullptr) return List::checklist;
    if (!isList(*parent.node)) return List::none;
    const bool isTodoList = enmlStyle(parent.node->attribute("style").value_or("")).isTodoList;
    return isTodoList && child.element() == HTMLElement::li ? List::checklist : List::plain;
}

void Converter::enterList(List wanted, Frame& parent) {
    if (parent.list == wanted && !parent.hasLooseItem) return;
    leaveList(parent);
    parent.list = wanted;
    if (wanted == List::none) return;
    if (wanted == List::checklist) {
        const std::array<HTMLAttribute, 1> attributes{{{"class", "ts-checklist"}}};
        written_.open(HTMLElement::ul, "ul", attributes);
    } else {
        Frame list;
        write(*parent.node, list, false);
    }
}

void Converter::leaveList(Frame& parent) {
    if (parent.hasLooseItem) written_.close();
    parent.hasLooseItem = false;
    if (parent.list != List::none) written_.close();
    parent.list = List::none;
}

void Converter::payBreak(Frame& parent) {
    if (!parent.owesBreak) return;
    parent.owesBreak = false;
    written_.open(HTMLElement::br, "br", {});
    written_.close();
}

/// Writes the start tag with the attributes that are not ours to trust.
void Converter::write(const HTMLNode& node, Frame& frame, bool hasStyle) {
    Attributes attributes(node.attributes().begin(), node.attributes().end());
    std::erase_if(attributes, [&](const HTMLAttribute& attribute) {
        return attribute.name == "class" || attribute.name.starts_with("data-")
               || (attribute.name == "style" && !hasStyle);
    });
    written_.open(node.element(), node.name(), attributes);
    ++frame.written;
}

void Converter::write(HTMLElement element, Frame& frame, const Attributes& attributes) {
    written_.open(element, html::nameOf(element), attributes);
    ++frame.written;
}

void Converter::unsupported(std::string_view text) {
    const std::array<HTMLAttribute, 1> attributes{{{"class", "ts-unsupported"}}};
    written_.open(HTMLElement::div, "div", attributes);
    writeText(text);
    written_.close();
}

}  // namespace

std::string htmlFromENML(
    const HTMLDocument& enml,
    ENMLReferences& references,
    bool keepsRemoteImages,
    std::vector<std::string>& warnings) {
    Converter converter(enml, references, keepsRemoteImages);
    walk(enml.root(), converter);
    converter.tellLosses(warnings);
    return converter.html();
}

}  // namespace tesserine
