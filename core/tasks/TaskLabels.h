#pragma once

#include <string_view>

namespace tesserine {

class CDTag;
class Instant;
class StoreContext;

/// The label of this name, trimmed, made `now` when there is none. Names match ignoring case; of
/// two twins the oldest is meant. Null, and nothing made, for an empty name.
CDTag* labelNamed(StoreContext& context, std::string_view name, Instant now);

}  // namespace tesserine
