#include "core/body/OpenElements.h"

#include <algorithm>

namespace tesserine {

using html::has;

namespace {

using Element = HTMLElement;

bool isCell(Element element) { return has(element, html::isCell); }

/// Where an item of a list ends looking for an item before it.
bool isItemBoundary(Element element) { return isCell(element) || has(element, html::isItemFrame); }

bool isDefinition(Element element) { return element == Element::dt || element == Element::dd; }

/// Whether inside one table `element` closes an open `peer`: cells close cells, rows close rows and
/// cells, and so on outwards.
bool closesPeer(Element element, Element peer) {
    switch (peer) {
    case Element::td:
    case Element::th:
    case Element::caption:
    case Element::colgroup: return true;
    case Element::tr: return element != Element::td && element != Element::th;
    case Element::thead:
    case Element::tbody:
    case Element::tfoot:
        return element != Element::td && element != Element::th && element != Element::tr;
    default: return false;
    }
}

}  // namespace

void OpenElements::push(HTMLElement element) {
    elements_.push_back(element);
    ++counts_[html::indexOf(element)];
}

void OpenElements::pop() {
    --counts_[html::indexOf(elements_.back())];
    elements_.pop_back();
}

template <class IsMatch, class IsStop>
std::optional<std::size_t> OpenElements::innermostWhere(IsMatch isMatch, IsStop isStop) const {
    for (std::size_t i = size(); i-- > 0;) {
        if (isMatch(elements_[i])) return i;
        if (isStop(elements_[i])) return std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::size_t> OpenElements::openParagraph() const {
    if (!contains(Element::p)) return std::nullopt;
    return innermostWhere([](Element open) { return open == Element::p; }, isCell);
}

std::optional<std::size_t> OpenElements::openHeading() const {
    return innermostWhere([](Element open) { return has(open, html::isHeading); }, isCell);
}

/// A link inside a link is two links, unless a block stands between them.
std::optional<std::size_t> OpenElements::openLink() const {
    if (!contains(Element::a)) return std::nullopt;
    return innermostWhere(
        [](Element open) { return open == Element::a; },
        [](Element open) { return !has(open, html::isFormatting); });
}

/// The open item that an item or its end tag closes.
std::optional<std::size_t> OpenElements::openItem(HTMLElement element) const {
    if (isDefinition(element)) return innermostWhere(isDefinition, isItemBoundary);
    if (!contains(element)) return std::nullopt;
    return innermostWhere([element](Element open) { return open == element; }, isItemBoundary);
}

/// The outermost part of the same table that `element` closes.
std::optional<std::size_t> OpenElements::openPeer(HTMLElement element) const {
    std::optional<std::size_t> outermost;
    for (std::size_t i = size(); i-- > 0 && elements_[i] != Element::table;) {
        if (closesPeer(element, elements_[i])) outermost = i;
    }
    return outermost;
}

std::optional<std::size_t> OpenElements::closedByStart(HTMLElement element) const {
    if (has(element, html::isTablePart)) return openPeer(element);
    if (has(element, html::endsParagraph)) {
        const auto paragraph = openParagraph();
        const auto heading = has(element, html::isHeading) ? openHeading() : std::nullopt;
        return paragraph && heading ? std::min(paragraph, heading)
                                    : (paragraph ? paragraph : heading);
    }
    switch (element) {
    case Element::a: return openLink();
    case Element::li:
    case Element::dt:
    case Element::dd:
    case Element::option: return openItem(element);
    case Element::optgroup: {
        const auto group = openItem(element);
        return group ? group : openItem(Element::option);
    }
    case Element::body: return closedByEnd(Element::head);
    default: return std::nullopt;
    }
}

std::optional<std::size_t> OpenElements::closedByEnd(HTMLElement element) const {
    const auto isElement = [element](Element open) { return open == element; };
    if (has(element, html::isHeading)) return openHeading();
    if (!contains(element)) return std::nullopt;
    if (element == Element::li || isDefinition(element)) {
        return innermostWhere(isElement, isItemBoundary);
    }
    if (element == Element::table || has(element, html::isTablePart)) {
        return innermostWhere(isElement, [](Element open) { return open == Element::table; });
    }
    return innermostWhere(isElement, isCell);
}

}  // namespace tesserine
