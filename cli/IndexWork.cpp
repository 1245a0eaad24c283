#include "cli/IndexWork.h"

#include "cli/Session.h"

#include <utility>

namespace tesserine::cli {

IndexWork::IndexWork(Session& session, std::string verb)
    : session_(session), progress_(session.environment(), std::move(verb)) {}

IndexWork::operator SearchWork() {
    return {.stop = session_.stop(), .progress = [this](std::size_t done, std::size_t total) {
                progress_.show(done, total);
            }};
}

void IndexWork::finish(SearchCoordinator::Outcome outcome) {
    if (outcome == SearchCoordinator::Outcome::stopped) throw Interrupted();
    if (outcome == SearchCoordinator::Outcome::beingRebuilt) tellOfAnothersRebuild(session_);
}

void IndexWork::tellOfAnothersRebuild(Session& session) {
    session.remark("The search index is being rebuilt; some results may be missing.");
}

}  // namespace tesserine::cli
