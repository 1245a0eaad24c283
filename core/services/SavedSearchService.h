#pragma once

#include "base/Clock.h"
#include "core/model/NoteEntities.h"

#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class StoreContext;

/// Keeps the ordered list of saved searches.
///
/// Works in the context it is handed and never saves. Two searches may have one name; a program
/// asks before it makes a second (`named`). Not synchronised: call it on the thread that owns the
/// context.
class SavedSearchService {
public:
    explicit SavedSearchService(const Clock& clock) : clock_(clock) {}

    /// A new search at the end of the list. An empty name is "Untitled Search".
    CDSavedSearch& create(
        StoreContext& context, std::string_view name, const std::string& query) const;
    void rename(CDSavedSearch& search, std::string_view name) const;
    void setQuery(CDSavedSearch& search, const std::string& query) const;
    void remove(StoreContext& context, CDSavedSearch& search) const;
    /// In the order of the list.
    std::vector<CDSavedSearch*> list(StoreContext& context) const;
    /// The searches of this name, ignoring case, in the order of the list.
    std::vector<CDSavedSearch*> named(StoreContext& context, std::string_view name) const;
    /// Gives each search of `order` its place in it; searches not in `order` keep theirs. Only
    /// those whose place changes are stamped.
    void reorder(const std::vector<CDSavedSearch*>& order) const;

private:
    const Clock& clock_;
};

}  // namespace tesserine
