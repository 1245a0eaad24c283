#include "core/body/AttributePolicy.h"

#include "base/Text.h"
#include "base/Uuid.h"
#include "core/body/CSSColor.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace tesserine {
namespace {

constexpr std::string_view encryptedClass = "ts-encrypted";
/// In the order in which several are written.
constexpr std::array<std::string_view, 3> knownClasses{
    "ts-checklist", encryptedClass, "ts-unsupported"};

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

bool isBase64(std::string_view text) {
    return std::ranges::all_of(text, [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')
               || c == '+' || c == '/' || c == '=';
    });
}

/// Calls `take` with each piece of `text` between separators that is not empty.
template <class IsSeparator, class Take>
void forEachPiece(std::string_view text, IsSeparator isSeparator, Take take) {
    while (!text.empty()) {
        const auto* const found = std::find_if(text.begin(), text.end(), isSeparator);
        const auto end = static_cast<std::size_t>(found - text.begin());
        if (end > 0) take(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// An address as browsers read it: without control characters, and trimmed.
std::string cleanAddress(std::string_view value) {
    std::string address(value);
    std::erase_if(address, isControl);
    const std::string_view trimmed = text::trimmed(address);
    return trimmed.size() == address.size() ? address : std::string(trimmed);
}

/// The scheme in lower case, without the colon; empty when there is none.
std::string schemeOf(std::string_view address) {
    constexpr std::size_t longest = 32;
    const std::size_t colon = address.substr(0, longest).find(':');
    return colon == std::string_view::npos ? "" : text::asciiLowercased(address.substr(0, colon));
}

/// The identifier behind `prefix` (lower case), when nothing else stands there.
std::optional<Uuid> uuidBehind(std::string_view prefix, std::string_view address) {
    if (address.size() < prefix.size()) return std::nullopt;
    if (text::asciiLowercased(address.substr(0, prefix.size())) != prefix) return std::nullopt;
    return Uuid::parse(address.substr(prefix.size()));
}

// Each of the following writes the normal form of a value to `kept`, or refuses it.

bool keepText(std::string_view value, std::string& kept) {
    kept = value;
    std::erase_if(kept, [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
    });
    return true;
}

bool keepClasses(std::string_view value, std::string& kept) {
    std::array<bool, knownClasses.size()> isThere{};
    forEachPiece(value, html::isSpace, [&](std::string_view word) {
        const auto* const known = std::ranges::find(knownClasses, word);
        if (known != knownClasses.end()) {
            isThere[static_cast<std::size_t>(known - knownClasses.begin())] = true;
        }
    });
    for (std::size_t i = 0; i < knownClasses.size(); ++i) {
        if (!isThere[i]) continue;
        if (!kept.empty()) kept += ' ';
        kept += knownClasses[i];
    }
    return !kept.empty();
}

bool keepChecked(std::string_view value, std::string& kept) {
    kept = value == "true" ? "true" : "false";
    return true;
}

bool keepUuid(std::string_view value, std::string& kept) {
    const auto uuid = Uuid::parse(text::trimmed(value));
    if (uuid) kept = uuid->text();
    return uuid.has_value();
}

bool keepAttachmentKind(std::string_view value, std::string& kept) {
    constexpr std::array<std::string_view, 5> kinds{"file", "pdf", "audio", "video", "scan"};
    kept = value;
    return std::ranges::find(kinds, value) != kinds.end();
}

/// Whatever it is: a later version of the program may be able to read it.
bool keepCipher(std::string_view value, std::string& kept) {
    return keepText(value, kept) && !kept.empty();
}

bool keepLink(std::string_view value, std::string& kept) {
    constexpr std::array<std::string_view, 4> schemes{"http", "https", "mailto", "tel"};
    constexpr std::string_view noteAddress = "tesserine://note/";
    kept = cleanAddress(value);
    const std::string scheme = schemeOf(kept);
    if (const auto note = uuidBehind(noteAddress, kept)) {
        kept.assign(noteAddress).append(note->text());
        return true;
    }
    if (kept.size() < scheme.size() + 2) return false;
    kept.replace(0, scheme.size(), scheme);
    return std::ranges::find(schemes, scheme) != schemes.end();
}

template <int minimum, int maximum>
bool keepInteger(std::string_view value, std::string& kept) {
    const std::string_view digits = text::trimmed(value);
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc{} || end != digits.data() + digits.size()) return false;
    kept = std::to_string(number);
    return number >= minimum && number <= maximum;
}

bool keepListType(std::string_view value, std::string& kept) {
    kept = value;
    return value.size() == 1 && std::string_view("1aAiI").find(value) != std::string_view::npos;
}

bool keepDirection(std::string_view value, std::string& kept) {
    kept = text::asciiLowercased(text::trimmed(value));
    return kept == "ltr" || kept == "rtl" || kept == "auto";
}

bool keepLanguage(std::string_view value, std::string& kept) {
    constexpr std::size_t longest = 35;  // RFC 5646, section 4.4.1
    kept = text::trimmed(value);
    return !kept.empty() && kept.size() <= longest && std::ranges::all_of(kept, [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')
               || c == '-';
    });
}

constexpr bool isSemicolon(char c) { return c == ';'; }

/// Calls `take(name, value)` for each declaration, both trimmed and the name in lower case.
template <class Take>
void forEachDeclaration(std::string_view style, Take take) {
    forEachPiece(style, isSemicolon, [&](std::string_view declaration) {
        const std::size_t colon = declaration.find(':');
        if (colon == std::string_view::npos) return;
        const std::string_view value = text::trimmed(declaration.substr(colon + 1));
        take(
            text::asciiLowercased(text::trimmed(declaration.substr(0, colon))),
            text::trimmed(value.substr(0, value.find('!'))));
    });
}

bool keepAlignment(std::string_view value, std::string& kept) {
    constexpr std::array<std::string_view, 4> alignments{"left", "center", "right", "justify"};
    forEachDeclaration(value, [&](std::string_view name, std::string_view alignment) {
        if (name != "text-align") return;
        const std::string lower = text::asciiLowercased(alignment);
        if (std::ranges::find(alignments, lower) == alignments.end()) return;
        kept = "text-align: " + lower;
    });
    return !kept.empty();
}

bool keepColors(std::string_view value, std::string& kept) {
    std::optional<std::string> color;
    std::optional<std::string> background;
    forEachDeclaration(value, [&](std::string_view name, std::string_view declared) {
        if (name != "color" && name != "background-color") return;
        auto opaque = css::opaqueColor(declared);
        if (opaque) (name == "color" ? color : background) = std::move(opaque);
    });
    if (color) kept = "color: " + *color;
    if (color && background) kept += "; ";
    if (background) kept += "background-color: " + *background;
    return !kept.empty();
}

/// A set of elements, made while compiling from their names.
class ElementSet {
public:
    constexpr explicit ElementSet(std::string_view words) {
        html::forEachWord(words, [&](std::string_view name) {
            contains_[html::indexOf(html::knownElement(name))] = true;
        });
    }
    constexpr bool contains(HTMLElement element) const { return contains_[html::indexOf(element)]; }

private:
    std::array<bool, html::elementCount> contains_{};
};

struct Rule {
    KeptAttribute attribute;
    ElementSet elements;
    /// Null for what the policy judges itself.
    bool (*keep)(std::string_view value, std::string& kept);
};

constexpr std::string_view everyElement =
    "p div span strong em u s code pre blockquote h1 h2 h3 h4 h5 h6 ul ol li hr br a img table thead "
    "tbody tfoot tr td th caption sub sup mark figure figcaption dl dt dd";

using Kept = KeptAttribute;

constexpr std::array rules{
    Rule{Kept::classes, ElementSet(everyElement), keepClasses},
    Rule{Kept::checked, ElementSet("li"), keepChecked},
    Rule{Kept::attachment, ElementSet("div span"), keepUuid},
    Rule{Kept::attachmentKind, ElementSet("div span"), keepAttachmentKind},
    Rule{Kept::cipher, ElementSet("div"), keepCipher},
    Rule{Kept::href, ElementSet("a"), keepLink},
    Rule{Kept::src, ElementSet("img"), nullptr},
    Rule{Kept::alt, ElementSet("img"), keepText},
    Rule{Kept::title, ElementSet("a img"), keepText},
    Rule{Kept::width, ElementSet("img"), keepInteger<1, 10'000>},
    Rule{Kept::height, ElementSet("img"), keepInteger<1, 10'000>},
    Rule{Kept::start, ElementSet("ol"), keepInteger<-1'000'000'000, 1'000'000'000>},
    Rule{Kept::type, ElementSet("ol"), keepListType},
    Rule{Kept::columnSpan, ElementSet("td th"), keepInteger<1, 1'000>},
    Rule{Kept::rowSpan, ElementSet("td th"), keepInteger<1, 1'000>},
    Rule{Kept::direction, ElementSet(everyElement), keepDirection},
    Rule{Kept::language, ElementSet(everyElement), keepLanguage},
    Rule{Kept::style, ElementSet("p div h1 h2 h3 h4 h5 h6 li td th blockquote"), keepAlignment},
    Rule{Kept::style, ElementSet("span mark"), keepColors},
};

const Rule* ruleFor(HTMLElement element, std::string_view name) {
    const auto* const found = std::ranges::find_if(rules, [&](const Rule& rule) {
        return KeptAttributes::nameOf(rule.attribute) == name && rule.elements.contains(element);
    });
    return found == rules.end() ? nullptr : found;
}

/// "data:image/png;base64,…" with a kind of image that programs agree on, in normal form.
std::optional<std::string> dataAddress(std::string_view address) {
    constexpr std::array<std::string_view, 9> types{
        "png", "jpeg", "jpg", "gif", "webp", "bmp", "tiff", "heic", "avif"};
    constexpr std::string_view prefix = "data:image/";
    constexpr std::string_view encoding = ";base64";
    const std::size_t comma = address.substr(0, 64).find(',');
    if (comma == std::string_view::npos) return std::nullopt;
    const std::string header = text::asciiLowercased(address.substr(0, comma));
    std::string_view type = header;
    if (!type.starts_with(prefix) || !type.ends_with(encoding)) return std::nullopt;
    type.remove_prefix(prefix.size());
    type.remove_suffix(std::min(encoding.size(), type.size()));
    if (std::ranges::find(types, type) == types.end()) return std::nullopt;
    std::string data(address.substr(comma + 1));
    std::erase(data, ' ');
    if (data.empty() || !isBase64(data)) return std::nullopt;
    return std::string(prefix).append(type).append(encoding).append(",").append(data);
}

}  // namespace

const KeptAttributes& AttributePolicy::judge(
    HTMLElement element, std::span<const HTMLAttribute> attributes) {
    kept_.clear();
    isEncrypted_ = false;
    for (const HTMLAttribute& attribute : attributes) {
        if (!keep(element, attribute)) countDropped(attribute.name);
    }
    if (kept_.isEmpty()) return kept_;
    settleClasses(element);
    settleAttachment();
    return kept_;
}

bool AttributePolicy::keep(HTMLElement element, const HTMLAttribute& attribute) {
    const Rule* const rule = ruleFor(element, attribute.name);
    if (rule == nullptr) return false;
    if (rule->keep == nullptr) return keepImageAddress(attribute.value);
    if (rule->keep(attribute.value, kept_.add(rule->attribute))) return true;
    kept_.remove(rule->attribute);
    return false;
}

bool AttributePolicy::keepImageAddress(std::string_view value) {
    constexpr std::string_view attachmentAddress = "tesserine-attachment://";
    std::string address = cleanAddress(value);
    if (const auto attachment = uuidBehind(attachmentAddress, address)) {
        kept_.add(Kept::src).assign(attachmentAddress).append(attachment->text());
        return true;
    }
    const std::string scheme = schemeOf(address);
    if (scheme == "http" || scheme == "https") {
        address.replace(0, scheme.size(), scheme);
        report_.externalImageURLs.push_back(address);
        if (options_.allowRemoteImages) kept_.add(Kept::src) = std::move(address);
        return options_.allowRemoteImages;
    }
    if (scheme != "data" || !options_.allowDataURIImages) return false;
    auto data = dataAddress(address);
    if (data) kept_.add(Kept::src) = std::move(*data);
    return data.has_value();
}

/// The class of a locked passage counts only with a cipher, and the other way round.
void AttributePolicy::settleClasses(HTMLElement element) {
    const std::string classes(kept_.value(Kept::classes));
    const std::size_t found = classes.find(encryptedClass);
    const bool saysEncrypted = found != std::string::npos;
    isEncrypted_ = saysEncrypted && element == HTMLElement::div && kept_.has(Kept::cipher);
    if (isEncrypted_) {
        for (std::size_t i = 0; i < KeptAttributes::count; ++i) {
            const auto attribute = static_cast<KeptAttribute>(i);
            if (attribute != Kept::classes && attribute != Kept::cipher) drop(attribute);
        }
        kept_.add(Kept::classes) = encryptedClass;
        return;
    }
    drop(Kept::cipher);
    if (!saysEncrypted) return;
    std::string& left = kept_.add(Kept::classes);
    keepClasses(std::string(classes).erase(found, encryptedClass.size()), left);
    if (left.empty()) drop(Kept::classes);
}

void AttributePolicy::settleAttachment() {
    if (!kept_.has(Kept::attachment)) drop(Kept::attachmentKind);
}

/// Takes back what was kept.
void AttributePolicy::drop(KeptAttribute attribute) {
    if (!kept_.has(attribute)) return;
    kept_.remove(attribute);
    countDropped(KeptAttributes::nameOf(attribute));
}

void AttributePolicy::countDropped(std::string_view name) {
    const auto found = report_.droppedAttributes.find(name);
    if (found != report_.droppedAttributes.end()) {
        ++found->second;
    } else {
        report_.droppedAttributes.emplace(name, 1);
    }
}

}  // namespace tesserine
