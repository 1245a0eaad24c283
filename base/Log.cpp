#include "base/Log.h"

#include "base/Clock.h"
#include "base/Files.h"
#include "base/UTF8.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>

namespace tesserine {
namespace {

constexpr std::size_t maximumLineBytes = 2'000;
constexpr off_t rotationBytes = 1'000'000;
constexpr int keptFiles = 3;

std::string_view nameOf(LogLevel level) {
    switch (level) {
    case LogLevel::debug: return "debug";
    case LogLevel::info: return "info";
    case LogLevel::warning: return "warning";
    case LogLevel::error: return "error";
    }
    return "error";
}

bool mustEscape(char32_t scalar) {
    return scalar < 0x20 || (scalar >= 0x7F && scalar <= 0x9F) || scalar == 0x2028
           || scalar == 0x2029;
}

void appendEscaped(std::string& line, char32_t scalar) {
    constexpr std::string_view digits = "0123456789abcdef";
    if (scalar == '\n') {
        line += "\\n";
        return;
    }
    line += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
        line.push_back(digits[scalar >> shift & 0xF]);
    }
}

/// One line whatever `message` holds: an entry cannot be forged, nor a terminal be steered.
std::string escaped(std::string_view message) {
    std::string line;
    line.reserve(message.size());
    while (!message.empty()) {
        if (const std::size_t bad = utf8::badPrefix(message); bad > 0) {
            appendEscaped(line, 0xFFFD);
            message.remove_prefix(bad);
            continue;
        }
        const utf8::Scalar scalar = utf8::first(message);
        if (mustEscape(scalar.value)) {
            appendEscaped(line, scalar.value);
        } else {
            line.append(message.substr(0, scalar.length));
        }
        message.remove_prefix(scalar.length);
    }
    return line;
}

/// The first bytes of valid `line`, whole scalars only.
std::string_view cut(std::string_view line, std::size_t limit) {
    if (line.size() <= limit) return line;
    while (limit > 0 && (static_cast<unsigned char>(line[limit]) & 0xC0) == 0x80) {
        --limit;
    }
    return line.substr(0, limit);
}

std::string entry(LogLevel level, std::string_view line) {
    std::string text = SystemClock().now().iso();
    text += ' ';
    text += nameOf(level);
    text += ' ';
    text += line;
    text.resize(cut(text, maximumLineBytes - 1).size());
    text += '\n';
    return text;
}

/// Appends to one file that several processes share; each notices when another has rotated it.
class FileLogSink final : public LogSink {
public:
    explicit FileLogSink(std::filesystem::path file) : file_(std::move(file)) {}
    ~FileLogSink() override { closeFile(); }
    FileLogSink(const FileLogSink&) = delete;
    FileLogSink& operator=(const FileLogSink&) = delete;

    void write(LogLevel level, std::string_view line) noexcept override {
        try {
            const std::string text = entry(level, line);
            const std::lock_guard lock(mutex_);
            if (!isCurrentFile()) openFile();
            rotateIfFull();
            if (descriptor_ < 0) return;
            // What cannot be logged is lost: there is nowhere left to tell.
            [[maybe_unused]] const auto written = ::write(descriptor_, text.data(), text.size());
        } catch (...) {
            return;
        }
    }

private:
    /// Whether the open file is still the one that bears the name.
    bool isCurrentFile() const {
        struct stat named {};
        struct stat opened {};
        return descriptor_ >= 0 && ::stat(file_.c_str(), &named) == 0
               && ::fstat(descriptor_, &opened) == 0 && named.st_ino == opened.st_ino
               && named.st_dev == opened.st_dev;
    }

    void openFile() {
        closeFile();
        files::createPrivateFolder(file_.parent_path());
        descriptor_ = ::open(
            file_.c_str(),
            O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
            S_IRUSR | S_IWUSR);
        if (descriptor_ >= 0) ::fchmod(descriptor_, S_IRUSR | S_IWUSR);
    }

    void closeFile() {
        if (descriptor_ >= 0) ::close(descriptor_);
        descriptor_ = -1;
    }

    void rotateIfFull() {
        struct stat status {};
        if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0) return;
        if (status.st_size < rotationBytes) return;

        // The lock belongs to the full file: whoever gets it second finds another file in place.
        ::flock(descriptor_, LOCK_EX);
        if (isCurrentFile()) moveFiles();
        openFile();
    }

    void moveFiles() const {
        for (int number = keptFiles; number >= 1; --number) {
            const std::string older = file_.native() + "." + std::to_string(number);
            const std::string newer =
                number == 1 ? file_.native() : file_.native() + "." + std::to_string(number - 1);
            std::rename(newer.c_str(), older.c_str());
        }
    }

    // Fixed after construction.
    std::filesystem::path file_;

    std::mutex mutex_;
    // Behind mutex_.
    int descriptor_ = -1;
};

class StandardErrorLogSink final : public LogSink {
public:
    explicit StandardErrorLogSink(LogLevel least) : least_(least) {}

    void write(LogLevel level, std::string_view line) noexcept override {
        if (level < least_) return;
        try {
            const std::string text = entry(level, line);
            std::fwrite(text.data(), 1, text.size(), stderr);
        } catch (...) {
            return;
        }
    }

private:
    LogLevel least_;
};

}  // namespace

std::shared_ptr<LogSink> makeFileLogSink(const std::filesystem::path& file) {
    return std::make_shared<FileLogSink>(file);
}

std::shared_ptr<LogSink> makeStandardErrorLogSink(LogLevel least) {
    return std::make_shared<StandardErrorLogSink>(least);
}

Log::Log(std::shared_ptr<LogSink> sink, std::string subsystem, std::string category)
    : sink_(std::move(sink)), subsystem_(std::move(subsystem)), category_(std::move(category)) {}

Log Log::category(std::string name) const { return {sink_, subsystem_, std::move(name)}; }

void Log::debug(std::string_view message) const { write(LogLevel::debug, message); }

void Log::info(std::string_view message) const { write(LogLevel::info, message); }

void Log::warning(std::string_view message) const { write(LogLevel::warning, message); }

void Log::error(std::string_view message) const { write(LogLevel::error, message); }

void Log::write(LogLevel level, std::string_view message) const {
    if (sink_ == nullptr) return;
    try {
        sink_->write(level, subsystem_ + ":" + category_ + " " + escaped(message));
    } catch (...) {
        return;  // out of memory: no log is worth an exception
    }
}

std::string redacted(Private hidden) {
    return "<private " + std::to_string(hidden.text.size()) + ">";
}

}  // namespace tesserine
