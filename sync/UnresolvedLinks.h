#pragma once

#include "base/Uuid.h"
#include "sync/JSONValue.h"

#include <compare>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// References to objects that have not arrived yet: no record waits for another, and no reference
/// is lost. Kept with the library as one JSON text.
class UnresolvedLinks {
public:
    struct Link {
        Uuid record;
        std::string key;  ///< of the payload
        auto operator<=>(const Link&) const = default;
    };

    UnresolvedLinks() = default;
    /// What `text` returned; anything else is an empty list.
    explicit UnresolvedLinks(std::string_view text);
    std::string text() const;

    void add(const Uuid& record, const std::string& key, const Uuid& target);
    /// Forgets what one member of a record waits for.
    void clear(const Uuid& record, const std::string& key);
    /// Takes out and returns the links that waited for `target`.
    std::vector<Link> take(const Uuid& target);
    /// Puts the references of `record` into its payload, which was made from what is there.
    void complete(const Uuid& record, JSONObject& payload) const;

private:
    // By record and key, and the same by target: thousands of notes may wait for one notebook.
    // Targets are identifiers in lower case.
    std::map<Uuid, std::map<std::string, std::set<std::string>>> waiting_;
    std::map<std::string, std::set<Link>> byTarget_;
};

}  // namespace tesserine
