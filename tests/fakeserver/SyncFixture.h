#pragma once

#include "base/FailPoint.h"
#include "tests/fakeserver/SyncDevice.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace tesserine::test {

/// How large a run shall be: `name` from the environment, or `otherwise`.
inline int setting(const char* name, int otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::atoi(text);
}

/// Two devices and the service between them.
class Sync : public testing::Test {
protected:
    ~Sync() override { failpoint::disarmAll(); }

    /// Synchronises both until neither has anything left to say.
    void settle() {
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(a.sync(), "");
            EXPECT_EQ(b.sync(), "");
        }
        EXPECT_EQ(a.dump(), b.dump());
        const std::size_t pushed = service.pushedCount();
        EXPECT_EQ(a.sync(), "");
        EXPECT_EQ(service.pushedCount(), pushed) << "something is sent again and again";
    }
    /// A note that both devices have.
    Uuid sharedNote(const std::string& html) {
        const Uuid id = *a.addNote("Shared", html).id;
        settle();
        return id;
    }
    static std::string revisions(CDNote& note) {
        std::string text;
        for (CDNoteRevision* const revision : note.revisions.all()) {
            text += revision->reason.valueOr("") + ":" + revision->html.valueOr("") + " ";
        }
        return text;
    }

    FakeSyncServer service;
    SyncDevice a{service, 1};
    SyncDevice b{service, 2};
};

}  // namespace tesserine::test
