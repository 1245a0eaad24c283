#include "base/Keychain.h"

#include "base/SecretServiceFixture.h"
#include "tests/support/Child.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <stdexcept>

namespace tesserine {
namespace {

/// In a process of its own: the connection to a bus is one for the whole process.
void inAProcess(const std::function<void()>& body) {
    EXPECT_EQ(test::runInChild(body), 0) << "see above";
}

void require(bool isTrue, const std::string& what) {
    if (!isTrue) throw std::runtime_error(what);
}

void requireEqual(const std::string& actual, const std::string& expected) {
    require(actual == expected, "“" + actual + "” in place of “" + expected + "”");
}

std::string readFrom(Keychain& keychain, const std::string& name) {
    return keychain.read(name).value_or("(none)");
}

/// Each operation says that it cannot be done; none takes that for “there is nothing”.
void requireUnavailable(Keychain& keychain) {
    const auto requireRefusal = [](const char* what, const std::function<void()>& operation) {
        try {
            operation();
        } catch (const KeychainError&) {
            return;
        }
        throw std::runtime_error(std::string(what) + " does not fail");
    };
    requireRefusal("read", [&] { keychain.read("a"); });
    requireRefusal("write", [&] { keychain.write("a", "written meanwhile"); });
    requireRefusal("remove", [&] { keychain.remove("a"); });
}

TEST(Keychain, KeepsReplacesAndRemovesSecretsApartForEveryService) {
    inAProcess([] {
        test::SecretServiceFixture desktop;
        desktop.offer();
        Keychain tokens("tokens");
        Keychain keys("keys");
        requireEqual(readFrom(tokens, "a"), "(none)");
        tokens.write("a", "one");
        tokens.write("b", "zwölf\n;=");
        keys.write("a", "");
        tokens.write("a", "two");
        requireEqual(desktop.contents(), "tokens/a=two;tokens/b=zwölf\n;=;keys/a=;");
        requireEqual(readFrom(tokens, "a"), "two");
        requireEqual(readFrom(tokens, "b"), "zwölf\n;=");
        requireEqual(readFrom(keys, "a"), "");
        tokens.remove("a");
        tokens.remove("a");
        requireEqual(readFrom(tokens, "a"), "(none)");
        requireEqual(desktop.contents(), "tokens/b=zwölf\n;=;keys/a=;");
    });
}

TEST(Keychain, ALockedOneIsUnavailableAsksNobodyAndLosesNothing) {
    inAProcess([] {
        test::SecretServiceFixture desktop;
        desktop.offer();
        Keychain keychain("tokens");
        keychain.write("a", "one");
        desktop.setLocked(true);
        requireUnavailable(keychain);
        desktop.lockUnopened();
        requireUnavailable(keychain);
        require(desktop.promptCount() == 0, "the user was asked");
        requireEqual(desktop.contents(), "tokens/a=one;");
        desktop.setLocked(false);
        requireEqual(readFrom(keychain, "a"), "one");
    });
}

TEST(Keychain, WithoutADefaultOneNothingIsThereAndNothingIsKept) {
    inAProcess([] {
        test::SecretServiceFixture desktop;
        desktop.setDefault(false);
        desktop.offer();
        Keychain keychain("tokens");
        requireEqual(readFrom(keychain, "a"), "(none)");
        try {
            keychain.write("a", "one");
            throw std::runtime_error("it was kept");
        } catch (const KeychainError&) {
            requireEqual(desktop.contents(), "");
        }
        require(desktop.promptCount() == 0, "the user was asked");
    });
}

TEST(Keychain, OneThatComesAndGoesIsUnavailableMeanwhile) {
    inAProcess([] {
        test::SecretServiceFixture desktop;
        Keychain keychain("tokens");
        requireUnavailable(keychain);
        desktop.offer();
        keychain.write("a", "one");
        desktop.withdraw();
        requireUnavailable(keychain);
        desktop.offer();
        requireEqual(readFrom(keychain, "a"), "one");
    });
}

TEST(Keychain, WithoutABusItIsUnavailableAndNotEmpty) {
    inAProcess([] {
        setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
        Keychain keychain("tokens");
        requireUnavailable(keychain);
    });
}

}  // namespace
}  // namespace tesserine
