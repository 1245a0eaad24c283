#pragma once

#include <chrono>
#include <string>

namespace tesserine::test {

/// A certificate that vouches for itself, and its key, both as PEM text.
struct TestCertificate {
    std::string certificate;
    std::string key;

    struct Options {
        std::string names = "DNS:localhost,IP:127.0.0.1";  ///< whom it vouches for
        std::chrono::hours validFor{24};                   ///< negative: it has expired
    };
    static TestCertificate make(const Options& options);
};

}  // namespace tesserine::test
