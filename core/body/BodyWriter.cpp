#include "core/body/BodyWriter.h"

#include "core/body/BodyError.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/HTMLTreeBuilder.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {

using html::has;

namespace {

enum class ByteKind : std::uint8_t { ordinary, space, special, control };

constexpr auto byteKinds = [] {
    std::array<ByteKind, 256> kinds{};
    for (std::size_t c = 0; c < 0x20; ++c) {
        kinds[c] = ByteKind::control;
    }
    for (const char c : {' ', '\t', '\n', '\f', '\r'}) {
        kinds[static_cast<unsigned char>(c)] = ByteKind::space;
    }
    for (const char c : {'&', '<', '>', '\xC2'}) {
        kinds[static_cast<unsigned char>(c)] = ByteKind::special;
    }
    return kinds;
}();

ByteKind kindOf(char c) { return byteKinds[static_cast<unsigned char>(c)]; }

constexpr std::string_view leadingNoBreakSpace = "\u00A0";

/// Whether preformatted text keeps the byte as it is.
bool isVerbatim(char c) {
    return kindOf(c) == ByteKind::ordinary || c == ' ' || c == '\t' || c == '\n';
}

/// How long the run of plain text at the front is that collapsing does not change: single spaces
/// may stand in it.
std::size_t collapsedPrefix(std::string_view text, bool isAfterSpace) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* at = begin;
    for (; at != end; ++at) {
        if (kindOf(*at) == ByteKind::ordinary) {
            isAfterSpace = false;
        } else if (*at != ' ' || std::exchange(isAfterSpace, true)) {
            break;
        }
    }
    return static_cast<std::size_t>(at - begin);
}

PlainTextWriter::Attributes shown(const KeptAttributes& attributes) {
    PlainTextWriter::Attributes shown;
    if (attributes.has(KeptAttribute::checked)) {
        shown.checked = attributes.value(KeptAttribute::checked);
    }
    shown.alternative = attributes.value(KeptAttribute::alt);
    return shown;
}

}  // namespace

BodyWriter::Handle BodyWriter::open(HTMLElement element, const KeptAttributes& attributes) {
    makeRoomFor(element);
    endText(has(element, html::isBlock));
    const std::size_t start = html_.size();
    writeStartTag(element, attributes);
    const auto handle = static_cast<Handle>(++handles_);
    open_.push(element, {handle, start, html_.size() - start});
    return handle;
}

void BodyWriter::close(Handle handle) {
    if (handle == Handle::none) return;
    const auto isIt = [handle](HTMLElement, const Detail& detail) {
        return detail.handle == handle;
    };
    if (open_.forgetWaiting(isIt)) return;
    for (std::size_t i = open_.size(); i-- > 0;) {
        if (open_[i].handle == handle) return closeFrom(i);
    }
}

void BodyWriter::writeVoid(HTMLElement element, const KeptAttributes& attributes) {
    makeRoomFor(element);
    endText(has(element, html::isBlock));
    writeStartTag(element, attributes);
    plainText_.close(element);
}

void BodyWriter::text(std::string_view text) {
    if (text.empty()) return;
    if (!html::isSpaceOnly(text)) reopenFormatting();
    startText();
    if (std::exchange(isSeparating_, false) && !endsInSpace_) {
        writePlain(" ");
        endsInSpace_ = true;
    }
    if (isPreformatted()) {
        writeVerbatim(text);
    } else {
        writeCollapsed(text);
    }
    checkLimit();
}

BodyWriter::Result BodyWriter::finish() {
    endText(true);
    checkLimit();
    return {std::exchange(html_, {}), plainText_.take()};
}

/// Closes what the element cannot stand in, and reopens what it can.
void BodyWriter::makeRoomFor(HTMLElement element) {
    if (nesting_ == Nesting::asTold) return;
    if (element == HTMLElement::a) open_.forgetWaitingLinks();
    if (const auto closed = open_.elements().closedByStart(element)) closeFrom(*closed);
    if (html::continuesLine(element)) reopenFormatting();
}

void BodyWriter::closeFrom(std::size_t first) {
    open_.closeFrom(first, [this] { writeEndTag(); });
}

void BodyWriter::reopenFormatting() {
    open_.reopenWaiting([this](HTMLElement element, const Detail& detail) {
        const std::size_t count = reopenedBytes_ + detail.startTagSize;
        if (count > HTMLTreeBuilder::maximumReopenedBytes) return;
        if (!open_.elements().closedByStart(element)) reopen(element, detail);
    });
}

void BodyWriter::reopen(HTMLElement element, const Detail& detail) {
    endText(false);
    const std::size_t start = html_.size();
    html_.append(html_, detail.startTag, detail.startTagSize);
    reopenedBytes_ += detail.startTagSize;
    isAfterBlock_ = false;
    isAfterPre_ = false;
    open_.push(element, {detail.handle, start, detail.startTagSize});
}

/// Writes the end tag of the innermost element.
void BodyWriter::writeEndTag() {
    const HTMLElement element = open_.elements().innermost();
    const bool isBlock = has(element, html::isBlock);
    endText(isBlock);
    html_.append("</").append(html::nameOf(element)).append(">");
    plainText_.close(element);
    isAfterBlock_ = isBlock;
    isAfterPre_ = false;
    checkLimit();
}

void BodyWriter::writeStartTag(HTMLElement element, const KeptAttributes& attributes) {
    html_.append("<").append(html::nameOf(element));
    attributes.forEach([&](std::string_view name, std::string_view value) {
        html_.append(" ").append(name).append("=\"");
        html::appendEscapedAttribute(html_, value);
        html_ += '"';
    });
    html_ += '>';
    plainText_.open(element, shown(attributes));
    isAfterBlock_ = has(element, html::isBlock);
    isAfterPre_ = element == HTMLElement::pre;
    checkLimit();
}

void BodyWriter::startText() {
    if (isInText_) return;
    isInText_ = true;
    isSpaceOnly_ = true;
    endsInSpace_ = false;
    textStart_ = html_.size();
    plainTextStart_ = plainText_.position();
}

void BodyWriter::endText(bool isBeforeBlock) {
    if (!std::exchange(isInText_, false)) return;
    isSeparating_ = false;
    if (isSpaceOnly_ && isDroppableSpace(isBeforeBlock)) {
        html_.resize(textStart_);
        plainText_.cutTo(plainTextStart_);
    } else if (isAfterPre_ && html_.size() > textStart_ && html_[textStart_] == '\n') {
        html_.insert(textStart_, 1, '\n');  // a reader drops one line break there
    }
}

/// Whether white space that stands alone here is only the layout of some source.
bool BodyWriter::isDroppableSpace(bool isBeforeBlock) const {
    if (has(open_.elements().innermost(), html::isTableFrame)) return true;
    return !isPreformatted() && (isAfterBlock_ || isBeforeBlock);
}

void BodyWriter::writeVerbatim(std::string_view text) {
    endsInSpace_ = html::isSpace(text.back());
    while (!text.empty()) {
        const auto* const end = std::find_if_not(text.begin(), text.end(), isVerbatim);
        const std::string_view run = text.substr(0, static_cast<std::size_t>(end - text.begin()));
        writePlain(run);
        if (!html::isSpaceOnly(run)) isSpaceOnly_ = false;
        text.remove_prefix(run.size());
        if (text.empty()) return;
        const bool isSpecial = kindOf(text.front()) == ByteKind::special;
        text.remove_prefix(isSpecial ? writeSpecial(text) : 1);
    }
}

void BodyWriter::writeCollapsed(std::string_view text) {
    while (!text.empty()) {
        const std::string_view run = text.substr(0, collapsedPrefix(text, endsInSpace_));
        if (!run.empty()) {
            writePlain(run);
            endsInSpace_ = run.back() == ' ';
            if (run.size() > 1 || !endsInSpace_) isSpaceOnly_ = false;
            text.remove_prefix(run.size());
        }
        if (text.empty()) return;
        std::size_t read = 1;
        if (kindOf(text.front()) == ByteKind::special) {
            read = writeSpecial(text);
            endsInSpace_ = false;
        } else if (kindOf(text.front()) == ByteKind::space) {
            if (!std::exchange(endsInSpace_, true)) writePlain(" ");
        }
        text.remove_prefix(read);
    }
}

/// Writes the special character in front and returns its size.
std::size_t BodyWriter::writeSpecial(std::string_view text) {
    isSpaceOnly_ = false;
    const std::string_view character =
        text.substr(0, text.starts_with(leadingNoBreakSpace) ? leadingNoBreakSpace.size() : 1);
    html::appendEscapedText(html_, character);
    plainText_.text(character);
    return character.size();
}

void BodyWriter::writePlain(std::string_view text) {
    html_ += text;
    plainText_.text(text);
}

bool BodyWriter::isPreformatted() const {
    return open_.elements().contains(HTMLElement::pre)
           || open_.elements().contains(HTMLElement::code);
}

void BodyWriter::checkLimit() const {
    if (html_.size() > limit_) throw BodyError::tooLarge();
}

}  // namespace tesserine
