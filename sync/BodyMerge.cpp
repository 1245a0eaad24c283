#include "sync/BodyMerge.h"

#include "core/body/CanonicalBody.h"
#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"

#include <algorithm>
#include <cstdint>
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

/// For each block of `base` its place in `other`, by a longest common subsequence; none for blocks
/// that are not there any more.
std::optional<std::vector<std::optional<std::size_t>>> matches(
    const Blocks& base, const Blocks& other) {
    const std::size_t columns = other.size() + 1;
    if ((base.size() + 1) * columns > comparisonLimit) return std::nullopt;
    std::vector<std::uint32_t> length((base.size() + 1) * columns, 0);
    for (std::size_t i = base.size(); i-- > 0;) {
        for (std::size_t j = other.size(); j-- > 0;) {
            length[i * columns + j] =
                base[i] == other[j]
                    ? length[(i + 1) * columns + j + 1] + 1
                    : std::max(length[(i + 1) * columns + j], length[i * columns + j + 1]);
        }
    }
    std::vector<std::optional<std::size_t>> places(base.size());
    for (std::size_t i = 0, j = 0; i < base.size() && j < other.size();) {
        if (base[i] == other[j]) {
            places[i++] = j++;
        } else if (length[(i + 1) * columns + j] >= length[i * columns + j + 1]) {
            ++i;
        } else {
            ++j;
        }
    }
    return places;
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
