#pragma once

#include "core/store/StoreChanges.h"

#include <QScopedValueRollback>

#include <deque>
#include <utility>
#include <vector>

namespace tesserine::app {

/// Takes changes of the library one after another.
///
/// A list that removes a line tells whoever showed it. Leaving what was shown may save it, which
/// changes the library while the list still removes: such changes wait for their turn.
class ChangesInTurn {
public:
    using Changes = std::vector<ObjectChange>;

    /// Hands the changes to `take`, now or when the call that is taking changes gets to them.
    template <class Take>
    void add(const Changes& changes, Take take) {
        waiting_.push_back(changes);
        if (isTaking_) return;
        const QScopedValueRollback taking(isTaking_, true);
        while (!waiting_.empty()) {
            const Changes next = std::move(waiting_.front());
            waiting_.pop_front();
            take(next);
        }
    }

private:
    std::deque<Changes> waiting_;
    bool isTaking_ = false;
};

}  // namespace tesserine::app
