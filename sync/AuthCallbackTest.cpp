#include "sync/AuthCallback.h"

#include "sync/SyncError.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

std::string outcome(const char* address) {
    try {
        const auto callback = AuthCallback::parse(address);
        if (!callback) return "ignored";
        return (callback->kind == AuthCallback::Kind::code ? "code " : "failed ") + callback->text;
    } catch (const SyncError& error) {
        return error.what();
    }
}

TEST(AuthCallback, OnlyItsOwnAddressesAreRead) {
    struct Case {
        const char* address;
        const char* outcome;
    };
    for (const auto& [address, expected] : {
             Case{"tesserine://auth?code=abc", "code abc"},
             Case{"TESSERINE://auth?code=abc", "code abc"},
             Case{"tesserine://host/auth?x=1&code=a%2Bb%3D+c&code=second", "code a+b=+c"},
             Case{"tesserine:///auth?code=abc#code=no", "code abc"},
             Case{"tesserine:/auth?code=abc", "code abc"},
             Case{"tesserine://auth?code=&error=cancelled", "Sign-in was cancelled."},
             Case{"tesserine://auth?code=", "ignored"},
             Case{"tesserine://auth?code", "ignored"},
             Case{"tesserine://auth", "ignored"},
             Case{"tesserine://authority?code=abc", "ignored"},
             Case{"tesserine://host/auth/x?code=abc", "ignored"},
             Case{"tesserine://note/auth?code=abc", "ignored"},
             Case{"https://auth?code=abc", "ignored"},
             Case{"auth?code=abc", "ignored"},
             Case{"tesserine://au th?code=abc", "ignored"},
             Case{"", "ignored"},
         }) {
        EXPECT_EQ(outcome(address), expected) << address;
    }
}

TEST(AuthCallback, FailuresAreSaidInASentence) {
    struct Case {
        const char* address;
        const char* outcome;
    };
    for (const auto& [address, expected] : {
             Case{
                 "tesserine://auth?error=not_invited",
                 "That address is not on the Tesserine beta list yet."},
             Case{
                 "tesserine://auth?error=suspended",
                 "failed That account is not active. Get in touch and we will sort it out."},
             Case{
                 "tesserine://auth?error=auth_unconfigured",
                 "failed Sign-in is not switched on for this server yet."},
             Case{
                 "tesserine://auth?error=weird%zz",
                 "failed Sign-in did not complete (weird%zz). Try again."},
             Case{"tesserine://auth?error=x&code=abc", "code abc"},
         }) {
        EXPECT_EQ(outcome(address), expected) << address;
    }
}

}  // namespace
}  // namespace tesserine
