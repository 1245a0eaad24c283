#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace tesserine::bench {

/// How long `work` takes, in seconds.
template <class Work>
double secondsOf(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Two ways to do the same job, each measured several times in turn.
struct Comparison {
    double raw = 0;   ///< seconds, median
    double ours = 0;  ///< seconds, median
    double ratio =
        0;  ///< median of ours / raw of each turn, so that a drifting machine counts less
};

/// Runs raw, ours, raw, ours … for `rounds` turns. Each returns the seconds that count; what it
/// does besides is not measured.
Comparison alternate(
    std::size_t rounds, const std::function<double()>& raw, const std::function<double()>& ours);

/// The value at `share` (0 to 1) of the sorted values; they are not empty.
double quantile(std::vector<double> values, double share);
inline double median(std::vector<double> values) { return quantile(std::move(values), 0.5); }

/// One line of the result.
struct Row {
    std::string job;
    std::string raw;
    std::string ours;
    double ratio = 0;        ///< ours to raw, above 1 is slower; 0: there is nothing to compare
    std::string goal{};      ///< empty: for information
    bool isReached = false;  ///< the goal, if there is one
};

/// The row of a comparison; `text` writes seconds the way the job is counted.
Row rowOf(
    const std::string& job,
    const Comparison& times,
    const std::function<std::string(double)>& text,
    std::optional<double> largestRatio = std::nullopt);

std::string milliseconds(double seconds);
std::string microseconds(double seconds);
/// "21,500/s"
std::string perSecond(std::size_t count, double seconds);
std::string megabytesPerSecond(std::size_t byteCount, double seconds);
/// "10,000"
std::string grouped(std::size_t number);

/// Prints the rows as a table in Markdown.
void print(std::ostream& out, const std::vector<Row>& rows);
/// What was measured on: processor, cores, system, SQLite, build.
std::string machineLine();

}  // namespace tesserine::bench
