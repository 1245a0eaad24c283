#include "core/import/LocalReferences.h"

#include "base/Text.h"
#include "core/import/MarkdownHTML.h"

#include <algorithm>

namespace tesserine {
namespace {

using Kind = ReferenceChange::Kind;

constexpr std::string_view leadsOut = "is no place in the imported folder";
constexpr std::string_view isMissing = "is not there";
constexpr std::size_t shownCharacters = 100;

std::string_view withoutFragment(std::string_view target) {
    return text::trimmed(target.substr(0, target.find('#')));
}

}  // namespace

ReferenceChange LocalReferences::picture(std::string_view address) {
    address = text::trimmed(address);
    const std::string begin = text::asciiLowercased(address.substr(0, 8));
    if (begin.starts_with("http://") || begin.starts_with("https://")) {
        if (keepsRemoteImages_) return {};
        return {Kind::address, std::string(address)};
    }
    if (begin.starts_with("data:")) return data(address);

    LocalAddress local = localAddress(address, from_.relative);
    switch (local.kind) {
    case LocalAddress::Kind::refused: return lost(address, leadsOut, Kind::unsupported);
    case LocalAddress::Kind::elsewhere:
        return lost(address, "is no picture that can be taken over", Kind::unsupported);
    case LocalAddress::Kind::file: break;
    }
    if (const auto found = otherFile(local.path)) return file(*found);
    if (const auto note = index_.notes.atPath(from_.root, local.path)) return noteLink(*note);
    return lost(address, isMissing, Kind::unsupported);
}

ReferenceChange LocalReferences::link(std::string_view address) {
    for (const std::string_view scheme : {wikiLinkScheme, wikiEmbedScheme}) {
        if (!address.starts_with(scheme)) continue;
        return wikiLink(withoutFragment(address.substr(scheme.size())), scheme == wikiEmbedScheme);
    }
    const LocalAddress local = localAddress(address, from_.relative);
    switch (local.kind) {
    case LocalAddress::Kind::refused: return lost(address, leadsOut, Kind::text);
    case LocalAddress::Kind::elsewhere: return {};
    case LocalAddress::Kind::file: break;
    }
    const bool isNote = isMarkdownFile(local.path);  // also one that was not chosen
    const auto other = isNote ? std::nullopt : otherFile(local.path);
    if (other) return file(*other);
    if (const auto note = index_.notes.atPath(from_.root, local.path)) return noteLink(*note);
    return lost(address, isMissing, isNote ? Kind::text : Kind::unsupported);
}

ReferenceChange LocalReferences::wikiLink(std::string_view target, bool isEmbedded) {
    if (target.empty()) return {Kind::text};
    const LocalAddress local = localAddress(target, {});
    if (local.kind == LocalAddress::Kind::refused) return lost(target, leadsOut, Kind::text);
    if (const auto note = index_.notes.named(from_, target)) return noteLink(*note);
    if (const auto other = index_.others.named(from_, target)) {
        return file(index_.folder.others()[*other]);
    }
    if (const auto beside = otherFile(std::string(target))) return file(*beside);
    return lost(target, isMissing, isEmbedded ? Kind::unsupported : Kind::text);
}

ReferenceChange LocalReferences::noteLink(std::size_t note) {
    if (auto address = noteAddress(note)) return {Kind::address, std::move(*address)};
    return {Kind::text};
}

ReferenceChange LocalReferences::file(const SourceFile& file) {
    if (auto element = fileElement(file)) return {Kind::element, std::move(*element)};
    return {Kind::unsupported};
}

/// Source: RFC 2397.
ReferenceChange LocalReferences::data(std::string_view address) {
    const std::size_t comma = address.find(',');
    const std::string head =
        text::asciiLowercased(address.substr(5, std::min(comma, address.size()) - 5));
    constexpr std::string_view encoding = ";base64";
    if (comma != std::string_view::npos && head.starts_with("image/") && head.ends_with(encoding)) {
        if (auto bytes = fromBase64(address.substr(comma + 1))) {
            const std::string type = head.substr(0, head.find(';'));
            auto element = dataElement(type, std::move(*bytes));
            if (element) return {Kind::element, std::move(*element)};
            return {Kind::unsupported};
        }
    }
    return lost("data:", "is no picture that can be taken over", Kind::unsupported);
}

ReferenceChange LocalReferences::lost(std::string_view address, std::string_view why, Kind left) {
    std::string shown(text::prefix(address, shownCharacters));
    if (shown.size() < address.size()) shown += "…";
    warn("“" + shown + "” " + std::string(why) + ".");
    return {left};
}

std::optional<SourceFile> LocalReferences::otherFile(const std::string& path) const {
    if (!index_.folder.isWholeFolder(from_.root)) return index_.folder.fileBeside(from_.root, path);
    const auto found = index_.others.atPath(from_.root, path);
    if (!found) return std::nullopt;
    return index_.folder.others()[*found];
}

}  // namespace tesserine
