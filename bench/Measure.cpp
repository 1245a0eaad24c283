#include "bench/Measure.h"

#include "base/sqlite/SQLiteDatabase.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <thread>

namespace tesserine::bench {
namespace {

std::string fixed(double value, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

/// Three digits that mean something, whatever the size.
std::string rounded(double value) {
    if (value >= 100) return fixed(value, 0);
    return fixed(value, value >= 10 ? 1 : 2);
}

std::string valueOf(const char* file, const std::string& key) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(key)) continue;
        std::string value = line.substr(line.find_first_of(":=") + 1);
        std::erase(value, '"');
        value.erase(0, value.find_first_not_of(' '));
        return value;
    }
    return "unknown";
}

/// How wide a text is printed: code points, all of one column here.
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

Comparison alternate(
    std::size_t rounds, const std::function<double()>& raw, const std::function<double()>& ours) {
    std::vector<double> rawTimes;
    std::vector<double> ourTimes;
    std::vector<double> ratios;
    for (std::size_t i = 0; i < rounds; ++i) {
        rawTimes.push_back(raw());
        ourTimes.push_back(ours());
        ratios.push_back(ourTimes.back() / rawTimes.back());
    }
    return {.raw = median(rawTimes), .ours = median(ourTimes), .ratio = median(ratios)};
}

Row rowOf(
    const std::string& job,
    const Comparison& times,
    const std::function<std::string(double)>& text,
    std::optional<double> largestRatio) {
    Row row{.job = job, .raw = text(times.raw), .ours = text(times.ours), .ratio = times.ratio};
    if (largestRatio) {
        row.goal = "≤ " + fixed(*largestRatio, 2);
        row.isReached = times.ratio <= *largestRatio;
    }
    return row;
}

double quantile(std::vector<double> values, double share) {
    std::ranges::sort(values);
    const auto last = static_cast<double>(values.size() - 1);
    return values[static_cast<std::size_t>(std::lround(last * share))];
}

std::string milliseconds(double seconds) { return rounded(seconds * 1e3) + " ms"; }

std::string microseconds(double seconds) { return rounded(seconds * 1e6) + " µs"; }

std::string perSecond(std::size_t count, double seconds) {
    const auto rate = static_cast<double>(count) / seconds;
    return grouped(static_cast<std::size_t>(std::lround(rate))) + "/s";
}

std::string megabytesPerSecond(std::size_t byteCount, double seconds) {
    return rounded(static_cast<double>(byteCount) / seconds / 1e6) + " MB/s";
}

std::string grouped(std::size_t number) {
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3;) {
        text.insert(place -= 3, ",");
    }
    return text;
}

void print(std::ostream& out, const std::vector<Row>& rows) {
    std::vector<std::vector<std::string>> lines{{"job", "raw limit", "ours", "ratio", "goal", ""}};
    for (const Row& row : rows) {
        lines.push_back(
            {row.job,
             row.raw,
             row.ours,
             row.ratio > 0 ? fixed(row.ratio, 2) : "",
             row.goal,
             row.goal.empty() ? ""
             : row.isReached  ? "reached"
                              : "missed"});
    }
    std::vector<std::size_t> widths(lines.front().size(), 3);
    for (const auto& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            widths[i] = std::max(widths[i], widthOf(line[i]));
        }
    }
    for (std::size_t n = 0; n < lines.size(); ++n) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            out << "| " << lines[n][i] << std::string(widths[i] - widthOf(lines[n][i]) + 1, ' ');
        }
        out << "|\n";
        if (n > 0) continue;
        for (const std::size_t width : widths) {
            out << "|" << std::string(width + 2, '-');
        }
        out << "|\n";
    }
}

std::string machineLine() {
    utsname system{};
    ::uname(&system);
    const int version = sqliteVersionNumber();
    return valueOf("/proc/cpuinfo", "model name") + ", "
           + std::to_string(std::thread::hardware_concurrency()) + " cores, "
           + valueOf("/etc/os-release", "PRETTY_NAME") + ", Linux " + system.release + ", SQLite "
           + std::to_string(version / 1'000'000) + "." + std::to_string(version / 1000 % 1000) + "."
           + std::to_string(version % 1000) + ", g++ " + __VERSION__;
}

}  // namespace tesserine::bench
