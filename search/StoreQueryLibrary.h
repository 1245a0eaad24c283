#pragma once

#include "base/Calendar.h"
#include "base/Clock.h"
#include "search/QuerySources.h"

#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class CDNotebook;
class StoreContext;

/// The library behind a query, read through a context. Belongs to the context's thread; throws
/// `StoreError` when it cannot be read.
class StoreQueryLibrary final : public QueryLibrary {
public:
    /// All three outlive it.
    StoreQueryLibrary(StoreContext& context, const Clock& clock, const Calendar& calendar)
        : context_(context), clock_(clock), calendar_(calendar) {}

    std::vector<std::string> documents(const LibraryCondition& condition) override;
    /// By path or by name, ignoring case; else by the end of the path, ignoring diacritics as well.
    Notebooks notebooks(std::string_view name, Depth depth) override;

private:
    std::vector<CDNotebook*> named(std::string_view name);

    StoreContext& context_;
    const Clock& clock_;
    const Calendar& calendar_;
};

}  // namespace tesserine
