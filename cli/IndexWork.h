#pragma once

#include "cli/Output.h"
#include "search/SearchCoordinator.h"

#include <string>

namespace tesserine::cli {

class Session;

/// Long work on the search index as the terminal does it: with its progress shown, ended by Ctrl-C.
class IndexWork {
public:
    /// `verb` begins the line that shows the progress.
    IndexWork(Session& session, std::string verb);

    operator SearchWork();  // NOLINT(google-explicit-constructor): it is one, for the coordinator
    /// Looks at how it ended: throws `Interrupted` when it was stopped, tells people when another
    /// process is still at it.
    void finish(SearchCoordinator::Outcome outcome);
    static void tellOfAnothersRebuild(Session& session);

private:
    Session& session_;
    Progress progress_;
};

}  // namespace tesserine::cli
