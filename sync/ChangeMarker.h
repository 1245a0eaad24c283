#pragma once

#include "core/model/Schema.h"

#include <cstddef>
#include <stop_token>

namespace tesserine {

class RecordMapper;
class StoreContext;
class SyncLedger;
class TesserineStore;

/// Finds out what was changed here: follows the library's history from a mark of its own and marks
/// every record whose payload is not what the server agreed on. Saves as it goes; killed, it goes
/// on where it was.
class ChangeMarker {
public:
    explicit ChangeMarker(TesserineStore& store) : store_(store) {}

    /// Marks everything that changed since the last call; looks at the whole library when the
    /// history does not reach back far enough.
    void catchUp(StoreContext& context, const std::stop_token& stop = {});

private:
    void examineAll(StoreContext& context, const std::stop_token& stop);
    void examineHistory(StoreContext& context, std::int64_t from, const std::stop_token& stop);
    void keepMark(SyncLedger& ledger, std::int64_t number);

    TesserineStore& store_;
};

}  // namespace tesserine
