#pragma once

#include "core/body/AttributedText.h"

#include <string_view>

namespace tesserine {

/// The note to edit that stands for a canonical body. What an editor cannot change becomes a
/// paragraph that keeps its HTML as it is (`BlockStyle::Kind::preserved`), so that nothing is lost:
/// `canonicalHTML` gives back the same bytes. Never fails; linear in time.
AttributedText attributedText(std::string_view canonicalBody);

}  // namespace tesserine
