#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// The user's settings: typed values under keys such as "tesserine.trashRetentionDays", in one JSON
/// file that several processes share.
///
/// Reads see what another process wrote. A write takes a lock, reads the file afresh, changes one
/// key and replaces the file atomically, so that no other key is lost. Keys it does not know are
/// kept. A file that cannot be read as JSON counts as empty and is kept aside as "….unreadable"
/// before the first write. Safe from several threads.
class Preferences {
public:
    /// `file` need not exist; its folder is made by the first write.
    explicit Preferences(std::filesystem::path file);
    /// Values that live in memory only.
    static Preferences inMemory();
    Preferences(Preferences&&) noexcept;
    Preferences& operator=(Preferences&&) noexcept;
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;
    ~Preferences();

    /// None when absent or of another type. A whole JSON number is an integer; 7.5 and "7" are not.
    std::optional<std::int64_t> integer(std::string_view key) const;
    std::optional<double> number(std::string_view key) const;
    std::optional<bool> boolean(std::string_view key) const;
    std::optional<std::string> string(std::string_view key) const;
    std::optional<std::vector<std::string>> strings(std::string_view key) const;

    /// All keys in use, sorted.
    std::vector<std::string> keys() const;
    /// The value as JSON text, whatever its type.
    std::optional<std::string> json(std::string_view key) const;

    /// These throw `FileError`.
    void set(std::string_view key, std::int64_t number);
    void set(std::string_view key, int number) { set(key, std::int64_t{number}); }
    void set(std::string_view key, double number);
    void set(std::string_view key, bool isTrue);
    void set(std::string_view key, std::string_view text);
    void set(std::string_view key, const char* text) { set(key, std::string_view(text)); }
    void set(std::string_view key, const std::vector<std::string>& texts);
    void remove(std::string_view key);

private:
    struct State;
    explicit Preferences(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}  // namespace tesserine
