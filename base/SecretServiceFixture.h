#pragma once

#include <memory>
#include <string>

namespace tesserine::test {

/// A desktop's secret service on a session bus of its own, as far as `Keychain` uses one. The
/// environment of the process leads to this bus, so there is one fixture in a process.
///
/// It keeps one collection. Safe from any thread.
class SecretServiceFixture {
public:
    /// The bus is up, and nobody offers the service yet.
    SecretServiceFixture();
    SecretServiceFixture(const SecretServiceFixture&) = delete;
    SecretServiceFixture& operator=(const SecretServiceFixture&) = delete;
    ~SecretServiceFixture();

    /// The service appears on the bus, or goes; what it keeps stays.
    void offer();
    void withdraw();

    void setLocked(bool isLocked);
    /// Locked, and not opened since it was started: it cannot say of what kind its items are, and
    /// calls all of them general.
    void lockUnopened();
    /// Whether its collection is the default one.
    void setDefault(bool isDefault);
    /// All secrets as "service/name=secret;", in order.
    std::string contents() const;
    /// How often the user would have been asked for a password.
    int promptCount() const;

private:
    class Service;
    const std::unique_ptr<Service> service_;
};

}  // namespace tesserine::test
