#pragma once

#include "core/model/StoreObject.h"
#include "sync/JSONValue.h"
#include "sync/UnresolvedLinks.h"

#include <vector>

namespace tesserine {

class StoreContext;
struct RecordField;

/// Turns objects into payloads and back. Works in the context it is given.
class RecordMapper {
public:
    RecordMapper(StoreContext& context, UnresolvedLinks& unresolved)
        : context_(context), unresolved_(unresolved) {}

    /// What is sent of `object`. Members of `agreed` that this program does not know are sent back
    /// as they are.
    JSONObject payload(StoreObject& object, const JSONObject& agreed = {}) const;
    /// Makes `object`, whose payload is `present`, what `wanted` (normalised) says. References to
    /// what is not there are put among the unresolved ones.
    void write(StoreObject& object, const JSONObject& present, const JSONObject& wanted);
    /// Lets the references lead to the objects of `arrived` that waited for them.
    void resolve(const std::vector<StoreObject*>& arrived);

private:
    struct Drawn {
        StoreObject* object;
        const RecordField* field;
        StoreObject* target;
    };
    void find(const UnresolvedLinks::Link& link, StoreObject& target, std::vector<Drawn>& links);
    void writeLink(StoreObject& object, const RecordField& field, const JSONValue& target);
    void writeLinks(StoreObject& object, const RecordField& field, const JSONValue& targets);

    StoreContext& context_;
    UnresolvedLinks& unresolved_;
};

}  // namespace tesserine
