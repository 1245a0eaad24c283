#include "sync/BodyMerge.h"

#include "core/body/CanonicalBody.h"
#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace tesserine {
namespace {

using Blocks = std::vector<std::string>;

constexpr std::size_t comparisonLimit = 4'000'000;  // pairs of blocks; beyond it nothing is merged

Blocks blocksOf(std::string_view html) {
    const HTMLDocument document = HTMLDocument::parse(html);
    Blocks blocks;
    for (const HTMLNode& child : document.root().children()) {
        blocks.push_back(HTMLSerializer::serialize(child));
    }
    return blocks;
}

using Places = std::vector<std::optional<std::size_t>>;

/// Finds the places of the blocks of `base` in `other` by a longest common subsequence; false when
/// there are too many to compare.
bool matchMiddle(
    std::span<const std::string> base,
    std::span<const std::string> other,
    std::size_t offset,
    std::span<std::optional<std::size_t>> places) {
    const std::size_t columns = other.size() + 1;
    if ((base.size() + 1) * columns > comparisonLimit) return false;
    std::vector<std::uint32_t> length((base.size() + 1) * columns, 0);
    for (std::size_t i = base.size(); i-- > 0;) {
        for (std::size_t j = other.size(); j-- > 0;) {
            length[i * columns + j] =
                base[i] == other[j]
                    ? length[(i + 1) * columns + j + 1] + 1
                    : std::max(length[(i + 1) * columns + j], length[i * columns + j + 1]);
        }
    }
    for (std::size_t i = 0, j = 0; i < base.size() && j < other.size();) {
        if (base[i] == other[j]) {
            places[i++] = offset + j++;
        } else if (length[(i + 1) * columns + j] >= length[i * columns + j + 1]) {
            ++i;
        } else {
            ++j;
        }
    }
    return true;
}

/// For each block of `base` its place in `other`; none for blocks that are not there any more. What
/// both begin and end with is soon found: long notes are compared where they differ.
std::optional<Places> matches(const Blocks& base, const Blocks& other) {
    Places places(base.size());
    const std::size_t least = std::min(base.size(), other.size());
    std::size_t head = 0;
    while (head < least && base[head] == other[head]) {
        places[head] = head;
        ++head;
    }
    std::size_t tail = 0;
    while (tail < least - head && base[base.size() - 1 - tail] == other[other.size() - 1 - tail]) {
        ++tail;
        places[base.size() - tail] = other.size() - tail;
    }
    const std::size_t count = base.size() - head - tail;
    const bool isFound = matchMiddle(
        std::span(base).subspan(head, count),
        std::span(other).subspan(head, other.size() - head - tail),
        head,
        std::span(places).subspan(head, count));
    return isFound ? std::optional(std::move(places)) : std::nullopt;
}

Blocks slice(const Blocks& blocks, std::size_t from, std::size_t to) {
    return {
        blocks.begin() + static_cast<std::ptrdiff_t>(from),
        blocks.begin() + static_cast<std::ptrdiff_t>(to)};
}

/// What becomes of a stretch between two blocks that all three share.
std::optional<Blocks> mergedStretch(const Blocks& base, const Blocks& mine, const Blocks& theirs) {
    if (mine == theirs || theirs == base) return mine;
    if (mine == base) return theirs;
    return std::nullopt;
}

}  // namespace

std::optional<std::string> mergedBody(
    std::string_view base, std::string_view mine, std::string_view theirs) {
    const Blocks old = blocksOf(base);
    const Blocks left = blocksOf(mine);
    const Blocks right = blocksOf(theirs);
    const auto inLeft = matches(old, left);
    const auto inRight = matches(old, right);
    if (!inLeft || !inRight) return std::nullopt;

    std::string merged;
    std::size_t o = 0;
    std::size_t l = 0;
    std::size_t r = 0;
    for (std::size_t i = 0; i <= old.size(); ++i) {
        const bool isEnd = i == old.size();
        const bool isShared = isEnd || ((*inLeft)[i] && (*inRight)[i]);
        if (!isShared) continue;
        const std::size_t leftEnd = isEnd ? left.size() : *(*inLeft)[i];
        const std::size_t rightEnd = isEnd ? right.size() : *(*inRight)[i];
        const auto stretch =
            mergedStretch(slice(old, o, i), slice(left, l, leftEnd), slice(right, r, rightEnd));
        if (!stretch) return std::nullopt;
        for (const std::string& block : *stretch) {
            merged += block;
        }
        if (!isEnd) merged += old[i];
        o = i + 1;
        l = leftEnd + 1;
        r = rightEnd + 1;
    }
    return canonicalBody(merged).html;
}

}  // namespace tesserine
