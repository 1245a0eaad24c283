#include "base/Keychain.h"

#include "tests/support/Child.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tesserine {
namespace {

TEST(Keychain, WithoutABusItIsUnavailableAndNotEmpty) {
    const int status = test::runInChild([] {
        setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
        Keychain keychain("app.tesserine.tests");
        int refusals = 0;
        const auto count = [&refusals](auto operation) {
            try {
                operation();
            } catch (const KeychainError&) {
                ++refusals;
            }
        };
        count([&] { keychain.read("a"); });
        count([&] { keychain.write("a", "b"); });
        count([&] { keychain.remove("a"); });
        if (refusals != 3) std::_Exit(1);
    });
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace tesserine
