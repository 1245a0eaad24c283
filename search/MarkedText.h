#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

/// Texts in which `marker::open` and `marker::close` stand around what a search matched.
namespace tesserine::marked {

/// Whether anything in `text` is marked.
bool hasMark(std::string_view text);

/// `text` with every place where one of `parts` stands marked, ignoring the case of ASCII letters.
std::string mark(std::string_view text, std::span<const std::string> parts);

/// `wordLimit` words around the first mark, or from the beginning without one, with "…" where
/// something is missing.
std::string excerpt(std::string_view text, std::size_t wordLimit);

/// Hands `text` over piece by piece, without the markers.
void forEachPiece(
    std::string_view text, const std::function<void(std::string_view piece, bool isMarked)>& take);

}  // namespace tesserine::marked
