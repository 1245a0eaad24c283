#include "core/import/AppleNoteText.h"

#include "base/Text.h"
#include "core/import/Gunzip.h"
#include "core/import/ProtobufReader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {
namespace {

using Style = AppleParagraph::Style;

constexpr std::size_t mostTextBytes = 64'000'000;

/// The numbers of fields, as the store of Apple Notes has them.
namespace field {
constexpr std::uint64_t version = 2;
constexpr std::uint64_t data = 3;
constexpr std::uint64_t text = 2;
constexpr std::uint64_t run = 5;
namespace of_run {
constexpr std::uint64_t length = 1;
constexpr std::uint64_t paragraph = 2;
constexpr std::uint64_t weight = 5;
constexpr std::uint64_t underlined = 6;
constexpr std::uint64_t struck = 7;
constexpr std::uint64_t baseline = 8;
constexpr std::uint64_t link = 9;
constexpr std::uint64_t attachment = 12;
}  // namespace of_run
namespace of_paragraph {
constexpr std::uint64_t style = 1;
constexpr std::uint64_t indent = 4;
constexpr std::uint64_t checklist = 5;
constexpr std::uint64_t quote = 8;
}  // namespace of_paragraph
constexpr std::uint64_t isDone = 2;  // of a checklist
namespace of_attachment {
constexpr std::uint64_t identifier = 1;
constexpr std::uint64_t type = 2;
}  // namespace of_attachment
}  // namespace field

struct StyleNumber {
    std::uint64_t number;
    Style style;
};
constexpr std::array styleNumbers = {
    StyleNumber{0, Style::title},
    StyleNumber{1, Style::heading},
    StyleNumber{2, Style::subheading},
    StyleNumber{4, Style::monospace},
    StyleNumber{100, Style::bulleted},
    StyleNumber{101, Style::dashed},
    StyleNumber{102, Style::numbered},
    StyleNumber{103, Style::checkbox},
};

/// The look of a number of UTF-16 units.
struct Run {
    std::size_t length = 0;
    AppleParagraph paragraph{};
    AppleSpan span{};
};

std::string cleanText(std::string_view bytes) { return text::sanitized(std::string(bytes)); }

/// An address or name; one that is longer than any is none, as it is repeated in each paragraph.
std::string shortText(std::string_view bytes) {
    constexpr std::size_t mostBytes = 4'000;
    return bytes.size() > mostBytes ? std::string{} : cleanText(bytes);
}

AppleParagraph paragraphOf(std::string_view message) {
    AppleParagraph paragraph;
    ProtobufReader reader(message);
    while (reader.next()) {
        switch (reader.field()) {
        case field::of_paragraph::style: {
            const auto* const known =
                std::ranges::find(styleNumbers, reader.number(), &StyleNumber::number);
            if (known != styleNumbers.end()) paragraph.style = known->style;
            break;
        }
        case field::of_paragraph::indent:
            paragraph.indent = std::min<std::uint64_t>(reader.number(), AppleParagraph::mostIndent);
            break;
        case field::of_paragraph::checklist: {
            ProtobufReader checklist(reader.bytes());
            while (checklist.next()) {
                if (checklist.field() == field::isDone) {
                    paragraph.isChecked = checklist.number() != 0;
                }
            }
            break;
        }
        case field::of_paragraph::quote: paragraph.isQuoted = reader.number() != 0; break;
        default: break;
        }
    }
    return paragraph;
}

Run runOf(std::string_view message) {
    Run run;
    ProtobufReader reader(message);
    while (reader.next()) {
        const std::uint64_t number = reader.number();
        switch (reader.field()) {
        case field::of_run::length: run.length = number; break;
        case field::of_run::paragraph: run.paragraph = paragraphOf(reader.bytes()); break;
        case field::of_run::weight:
            run.span.isBold = (number & 1U) != 0;
            run.span.isItalic = (number & 2U) != 0;
            break;
        case field::of_run::underlined: run.span.isUnderlined = number != 0; break;
        case field::of_run::struck: run.span.isStruck = number != 0; break;
        case field::of_run::baseline:
            run.span.baseline = reader.signedNumber() < 0 ? -1 : number > 0 ? 1 : 0;
            break;
        case field::of_run::link: run.span.link = shortText(reader.bytes()); break;
        case field::of_run::attachment:
            run.span.attachment =
                shortText(protobufField(reader.bytes(), field::of_attachment::identifier));
            run.span.type = shortText(protobufField(reader.bytes(), field::of_attachment::type));
            break;
        default: break;
        }
    }
    return run;
}

/// Cuts a text into paragraphs, run by run.
class Cutter {
public:
    void add(const Run& run, std::u16string_view units) {
        while (!units.empty()) {
            const std::size_t end = std::min(units.find(u'\n'), units.size());
            addSpan(run, units.substr(0, end));
            if (end == units.size()) return;
            endParagraph(run);
            units.remove_prefix(end + 1);
        }
    }
    std::vector<AppleParagraph> finish() {
        if (hasBegun_) paragraphs_.push_back(std::move(current_));
        return std::move(paragraphs_);
    }

private:
    void begin(const Run& run) {
        if (!hasBegun_) current_ = run.paragraph;
        hasBegun_ = true;
    }
    void addSpan(const Run& run, std::u16string_view units) {
        if (units.empty()) return;
        begin(run);
        AppleSpan span = run.span;
        if (span.attachment.empty()) span.text = cleanText(text::fromUTF16(units));
        current_.spans.push_back(std::move(span));
    }
    void endParagraph(const Run& run) {
        begin(run);
        paragraphs_.push_back(std::exchange(current_, {}));
        hasBegun_ = false;
    }

    std::vector<AppleParagraph> paragraphs_;
    AppleParagraph current_;
    bool hasBegun_ = false;
};

}  // namespace

std::string AppleParagraph::text() const {
    std::string result;
    for (const AppleSpan& span : spans) {
        result += span.text;
    }
    return result;
}

std::vector<AppleParagraph> appleParagraphs(std::string_view message) {
    const std::u16string units = text::toUTF16(cleanText(protobufField(message, field::text)));
    std::u16string_view rest = units;
    Cutter cutter;
    ProtobufReader reader(message);
    while (reader.next() && !rest.empty()) {
        if (reader.field() != field::run) continue;
        const Run run = runOf(reader.bytes());
        const std::size_t length = std::min(run.length, rest.size());
        cutter.add(run, rest.substr(0, length));
        rest.remove_prefix(length);
    }
    cutter.add({}, rest);
    return cutter.finish();
}

std::optional<std::vector<AppleParagraph>> appleNoteText(std::span<const std::uint8_t> data) {
    const auto document = gunzipped(data, mostTextBytes);
    if (!document) return std::nullopt;
    const std::string_view text =
        protobufField(protobufField(*document, field::version), field::data);
    // A note without a text has one of no characters; one without the message is something else.
    if (text.empty()) return std::nullopt;
    return appleParagraphs(text);
}

}  // namespace tesserine
