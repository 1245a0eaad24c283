#pragma once

#include "base/Clock.h"
#include "core/model/NoteEntities.h"
#include "core/services/ServiceErrors.h"
#include "core/services/Tree.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class StoreContext;

/// Keeps the tree of notebooks. Names are unique below one parent, ignoring case.
///
/// Works in the context it is handed and never saves. Changes stamp the notebook's `updatedAt`, not
/// that of its notes. Not synchronised: call it on the thread that owns the context.
class NotebookService {
public:
    explicit NotebookService(const Clock& clock) : clock_(clock) {}

    /// The notebook of this name below `parent` (none: at the top), made when there is none. An
    /// empty name is "Untitled Notebook".
    CDNotebook& findOrCreate(
        StoreContext& context, std::string_view name, CDNotebook* parent = nullptr) const;
    /// The same for each name of a path from the top; none for an empty path.
    CDNotebook* findOrCreatePath(
        StoreContext& context, const std::vector<std::string>& names) const;
    /// The notebook of this name below `parent`, if any.
    CDNotebook* find(
        StoreContext& context, std::string_view name, CDNotebook* parent = nullptr) const;
    /// Notebooks that a person may mean by `text`: whose path is `text` ("Work / Plans", spaces
    /// around "/" as you like), else whose name is, ignoring case; oldest first.
    std::vector<CDNotebook*> named(StoreContext& context, std::string_view text) const;

    /// Below `parent` (none: at the top), by name.
    std::vector<CDNotebook*> children(
        StoreContext& context, CDNotebook* parent, const text::Collator& collator) const;
    /// All notebooks as a tree, by name within each level.
    std::vector<tree::Row<CDNotebook>> tree(
        StoreContext& context, const text::Collator& collator) const;
    /// The names from the top down, as "Work / Plans".
    static std::string pathText(const CDNotebook& notebook) { return tree::pathText(notebook); }

    /// Puts the notebook below `parent` (none: at the top); refused, and false, when that is the
    /// notebook itself or stands below it.
    bool move(CDNotebook& notebook, CDNotebook* parent) const;
    /// Whether another notebook of the same name stands below `parent`, so that a person is warned
    /// before a move.
    bool wouldMakeTwins(
        StoreContext& context, const CDNotebook& notebook, CDNotebook* parent) const;
    /// An empty name changes nothing. Throws `NotebookError::duplicateName`.
    void rename(StoreContext& context, CDNotebook& notebook, std::string_view name) const;
    /// None takes the colour away. Throws `NotebookError::badColor`.
    void setColor(CDNotebook& notebook, const std::optional<std::string>& color) const;
    void setFavorite(CDNotebook& notebook, bool isFavorite) const;
    /// Deletes the notebook; its notes and children stay, without notebook and parent.
    void remove(StoreContext& context, CDNotebook& notebook) const;

    /// The template that new notes here start from; none takes it away.
    void setNoteTemplate(CDNotebook& notebook, const CDNote* noteTemplate) const;
    /// That template, unless it is gone, in the trash or no template any more.
    CDNote* noteTemplate(StoreContext& context, const CDNotebook& notebook) const;

private:
    const Clock& clock_;
};

}  // namespace tesserine
