#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace tesserine {

enum class LogLevel { debug, info, warning, error };

/// Where log lines go. Implementations are safe from any thread and never throw.
class LogSink {
public:
    LogSink() = default;
    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;
    virtual ~LogSink() = default;
    virtual void write(LogLevel level, std::string_view line) noexcept = 0;
};

/// A private file that is rotated at 1 MB and keeps three older ones; lines are cut at 2,000 bytes.
std::shared_ptr<LogSink> makeFileLogSink(const std::filesystem::path& file);
/// Standard error, from `least` upwards.
std::shared_ptr<LogSink> makeStandardErrorLogSink(LogLevel least);

/// Text of a user: it never reaches a log, only its length does (`<private 37>`).
struct Private {
    std::string_view text;
};

/// Names the place a line comes from: a subsystem such as "app.tesserine.core" and a category such
/// as "store". Cheap to copy. Lines hold literals, numbers, identifiers and digests, never note
/// text; line breaks and control characters in them are escaped.
class Log {
public:
    /// A log that drops everything.
    Log() = default;
    Log(std::shared_ptr<LogSink> sink, std::string subsystem, std::string category);

    /// The same sink and subsystem, another category.
    Log category(std::string name) const;

    void debug(std::string_view message) const;
    void info(std::string_view message) const;
    void warning(std::string_view message) const;
    void error(std::string_view message) const;

private:
    void write(LogLevel level, std::string_view message) const;

    std::shared_ptr<LogSink> sink_;  // shared by every log of the process
    std::string subsystem_;
    std::string category_;
};

/// "<private 37>": how `hidden` stands in a log line.
std::string redacted(Private hidden);

}  // namespace tesserine
