#include "base/WebAddress.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

std::string shown(const std::optional<WebAddress>& address) {
    if (!address) return "none";
    return address->scheme + " " + (address->hasUserInfo ? "user@" : "") + address->host
           + (address->port ? ":" + std::to_string(*address->port) : "") + " " + address->path;
}

TEST(WebAddress, IsTakenApartAsItWillBeOpened) {
    struct Case {
        const char* text;
        const char* parts;
    };
    for (const auto& [text, parts] : {
             Case{"https://a.example/x/y?z#q", "https a.example /x/y"},
             Case{"HTTPS://A.Example:8443/", "https a.example:8443 /"},
             Case{"https://good.example@evil.example/", "https user@evil.example /"},
             Case{"https://good.example%40evil.example/", "none"},
             Case{"https://good.example\\@evil.example/", "none"},
             Case{"https://[::1]/", "https [::1] /"},
             Case{"https:///file", "https file /"},  // as libcurl would open it
             Case{"https://a.example/a b", "none"},
             Case{"https://a.example/%zz", "none"},
             Case{"https://a.example/\r\nHost: b", "none"},
             Case{"https://ex\u00E4mple/", "none"},
             Case{"https://a.example:99999/", "none"},
             Case{"mailto:someone@a.example", "mailto  "},
             Case{"a/b", "  "},
             Case{"", "none"},
         }) {
        EXPECT_EQ(shown(WebAddress::parse(text)), parts) << text;
    }
}

TEST(WebAddress, LeadsOnWhereAReferencePoints) {
    const auto base = *WebAddress::parse("https://a.example/x/y?q");
    struct Case {
        const char* reference;
        const char* target;
    };
    for (const auto& [reference, target] : {
             Case{"z", "https://a.example/x/z"},
             Case{"/z", "https://a.example/z"},
             Case{"//b.example/z", "https://b.example/z"},
             Case{"http://b.example/", "http://b.example/"},
             Case{"a b", "none"},
             Case{"", "none"},
         }) {
        const auto resolved = base.resolved(reference);
        EXPECT_EQ(resolved ? resolved->text : "none", target) << reference;
    }
}

TEST(WebAddress, KnowsWhatIsBelowADomainAndWhatIsANumber) {
    const auto address = [](const std::string& host) {
        return *WebAddress::parse("https://" + host + "/");
    };
    EXPECT_TRUE(address("tesserine.example").isWithin("tesserine.example"));
    EXPECT_TRUE(address("dl.Tesserine.example").isWithin("tesserine.example"));
    for (const char* other :
         {"eviltesserine.example", "tesserine.example.", "example", "a.tesserine.example.org"}) {
        EXPECT_FALSE(address(other).isWithin("tesserine.example")) << other;
    }
    for (const char* number : {"127.0.0.1", "[::1]", "2130706433", "0x7f.1", "127.1"}) {
        EXPECT_TRUE(address(number).hasIPHost()) << number;
    }
    EXPECT_FALSE(address("1.example").hasIPHost());
}

}  // namespace
}  // namespace tesserine
