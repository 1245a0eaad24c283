#include "base/Preferences.h"

#include "base/Files.h"
#include "base/JSON.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <mutex>

namespace tesserine {
namespace {

using boost::json::object;
using boost::json::value;

constexpr std::uint64_t maximumFileBytes = 4 << 20;
constexpr std::chrono::seconds lockTimeout{10};
constexpr double largestWholeDouble = 9'007'199'254'740'992.0;  // 2^53

/// What tells one state of a file from another without reading it.
struct Signature {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t byteCount = -1;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;

    friend bool operator==(const Signature&, const Signature&) = default;
};

Signature signatureOf(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) return {};
    return {
        .device = status.st_dev,
        .inode = status.st_ino,
        .byteCount = status.st_size,
        .seconds = status.st_mtim.tv_sec,
        .nanoseconds = status.st_mtim.tv_nsec};
}

/// What a settings file holds, or that it holds no settings.
struct Content {
    object values;
    bool isUnreadable = false;
};

/// A file that is not there is empty. Throws `FileError` for one that may not be read.
Content contentOf(const std::filesystem::path& file) {
    try {
        const Bytes bytes = files::read(file, maximumFileBytes);
        value read = json::parse(textOf(bytes));
        if (read.is_object()) return {.values = std::move(read.get_object())};
    } catch (const FileError& error) {
        if (error.kind() == FileError::Kind::notFound) return {};
        if (error.kind() != FileError::Kind::tooLarge) throw;
    } catch (const json::JSONError&) {
        return {.isUnreadable = true};
    }
    return {.isUnreadable = true};
}

/// Keeps a file we cannot read beside itself, under the first free name.
void keepAside(const std::filesystem::path& file) {
    constexpr int mostKept = 100;
    for (int number = 1; number <= mostKept; ++number) {
        const std::string ending = number == 1 ? "" : "-" + std::to_string(number);
        try {
            files::linkOrCopy(file, file.native() + ".unreadable" + ending);
            return;
        } catch (const FileError& error) {
            if (error.kind() != FileError::Kind::exists || number == mostKept) throw;
        }
    }
}

const value* find(const object& values, std::string_view key) {
    return values.if_contains({key.data(), key.size()});
}

std::optional<std::int64_t> wholeNumber(const value& stored) {
    if (stored.is_int64()) return stored.get_int64();
    if (!stored.is_double()) return std::nullopt;
    // "7.0" is a whole number too, as long as a double tells it from its neighbours.
    const double number = stored.get_double();
    const bool isWhole = std::trunc(number) == number && std::abs(number) < largestWholeDouble;
    return isWhole ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
}

std::string textOfString(const value& stored) {
    return {stored.get_string().data(), stored.get_string().size()};
}

}  // namespace

struct Preferences::State {
    // Fixed after construction. Empty: in memory only.
    std::filesystem::path file;

    std::mutex mutex;
    // Behind mutex.
    object values;
    Signature signature;
    bool isRead = false;

    /// The value of `key` as the file holds it now, made by `make` from what is stored.
    template <class Make>
    auto read(std::string_view key, const Make& make)
        -> decltype(make(std::declval<const value&>()));
    /// Changes the values by `change` and writes them, unless the change was none.
    template <class Change>
    void write(const Change& change);
    void refresh();
};

void Preferences::State::refresh() {
    if (file.empty()) return;
    const Signature now = signatureOf(file);
    if (isRead && now == signature) return;
    try {
        values = contentOf(file).values;
    } catch (const FileError&) {
        values.clear();  // reading never fails; a write of this file tells the reason
    }
    signature = now;
    isRead = true;
}

template <class Make>
auto Preferences::State::read(std::string_view key, const Make& make)
    -> decltype(make(std::declval<const value&>())) {
    const std::lock_guard lock(mutex);
    refresh();
    const value* const stored = find(values, key);
    if (stored == nullptr) return std::nullopt;
    return make(*stored);
}

template <class Change>
void Preferences::State::write(const Change& change) {
    const std::lock_guard lock(mutex);
    if (file.empty()) {
        change(values);
        return;
    }

    files::createPrivateFolder(file.parent_path());
    const auto processLock = files::FolderLock::acquire(file.native() + ".lock", lockTimeout);
    if (!processLock) throw FileError::fromErrno(file, "written", EBUSY);

    Content content = contentOf(file);
    const object before = content.values;
    change(content.values);
    if (before != content.values) {
        if (content.isUnreadable) keepAside(file);
        const std::string text = json::write(content.values, json::Layout::pretty) + "\n";
        files::writeAtomically(file, bytesOf(text));
    }
    values = std::move(content.values);
    signature = signatureOf(file);
    isRead = true;
}

Preferences::Preferences(std::filesystem::path file) : Preferences(std::make_unique<State>()) {
    state_->file = std::move(file);
}

Preferences::Preferences(std::unique_ptr<State> state) : state_(std::move(state)) {}

Preferences Preferences::inMemory() { return Preferences(std::make_unique<State>()); }

Preferences::Preferences(Preferences&&) noexcept = default;
Preferences& Preferences::operator=(Preferences&&) noexcept = default;
Preferences::~Preferences() = default;

std::optional<std::int64_t> Preferences::integer(std::string_view key) const {
    return state_->read(key, wholeNumber);
}

std::optional<double> Preferences::number(std::string_view key) const {
    return state_->read(key, [](const value& stored) -> std::optional<double> {
        if (!stored.is_number()) return std::nullopt;
        return stored.to_number<double>();
    });
}

std::optional<bool> Preferences::boolean(std::string_view key) const {
    return state_->read(key, [](const value& stored) -> std::optional<bool> {
        if (!stored.is_bool()) return std::nullopt;
        return stored.get_bool();
    });
}

std::optional<std::string> Preferences::string(std::string_view key) const {
    return state_->read(key, [](const value& stored) -> std::optional<std::string> {
        if (!stored.is_string()) return std::nullopt;
        return textOfString(stored);
    });
}

std::optional<std::vector<std::string>> Preferences::strings(std::string_view key) const {
    using Strings = std::optional<std::vector<std::string>>;
    return state_->read(key, [](const value& stored) -> Strings {
        if (!stored.is_array()) return std::nullopt;
        std::vector<std::string> texts;
        for (const value& element : stored.get_array()) {
            if (!element.is_string()) return std::nullopt;
            texts.push_back(textOfString(element));
        }
        return texts;
    });
}

std::vector<std::string> Preferences::keys() const {
    const std::lock_guard lock(state_->mutex);
    state_->refresh();
    std::vector<std::string> keys;
    for (const auto& member : state_->values) {
        keys.emplace_back(member.key());
    }
    std::ranges::sort(keys);
    return keys;
}

std::optional<std::string> Preferences::json(std::string_view key) const {
    return state_->read(
        key, [](const value& stored) -> std::optional<std::string> { return json::write(stored); });
}

void Preferences::set(std::string_view key, std::int64_t number) {
    state_->write([&](object& values) { values[{key.data(), key.size()}] = number; });
}

void Preferences::set(std::string_view key, double number) {
    state_->write([&](object& values) { values[{key.data(), key.size()}] = number; });
}

void Preferences::set(std::string_view key, bool isTrue) {
    state_->write([&](object& values) { values[{key.data(), key.size()}] = isTrue; });
}

void Preferences::set(std::string_view key, std::string_view text) {
    state_->write([&](object& values) {
        values[{key.data(), key.size()}] = boost::json::string_view(text.data(), text.size());
    });
}

void Preferences::set(std::string_view key, const std::vector<std::string>& texts) {
    boost::json::array array;
    for (const std::string& text : texts) {
        array.emplace_back(text);
    }
    state_->write([&](object& values) { values[{key.data(), key.size()}] = array; });
}

void Preferences::remove(std::string_view key) {
    state_->write([&](object& values) {
        // Keeps the other keys in their order.
        auto* const found = values.find({key.data(), key.size()});
        if (found != values.end()) values.stable_erase(found);
    });
}

}  // namespace tesserine
