#pragma once

#include <QScopedValueRollback>

#include <deque>
#include <functional>
#include <utility>

namespace tesserine::app {

/// Changes a list one change after another.
///
/// A list that removes a line tells whoever showed it. Leaving what was shown may save it, which
/// changes the library while the list still removes: that change of the list waits for its turn.
class InTurn {
public:
    /// Does the work: now, or before the call returns that is working already.
    void run(std::function<void()> work) {
        waiting_.push_back(std::move(work));
        if (isWorking_) return;
        const QScopedValueRollback working(isWorking_, true);
        while (!waiting_.empty()) {
            const auto next = std::move(waiting_.front());
            waiting_.pop_front();
            next();
        }
    }

private:
    std::deque<std::function<void()>> waiting_;
    bool isWorking_ = false;
};

}  // namespace tesserine::app
