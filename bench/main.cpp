#include "bench/BodyJobs.h"
#include "bench/Measure.h"
#include "bench/StoreJobs.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string_view>

namespace tesserine::bench {
namespace {

constexpr const char* usage =
    R"(usage: tesserine-bench [--notes N] [--rounds N] [--only JOB] [--folder DIR]

Measures this build beside the raw limit of what it stands on, in turns, and prints a table.
  --notes N     notes in the sample library, at least 1,000 (default 10,000)
  --rounds N    how often each job is repeated (default 5)
  --only JOB    one of insert, list, body, change, open, canonical
  --folder DIR  where the libraries are made, in a folder "bench-libraries" that is removed
                (default: beside the program)
)";

constexpr std::string_view canonicalJobName = "canonical";
/// More bodies than this say nothing new.
constexpr std::size_t mostBodies = 10'000;

struct Arguments {
    std::size_t noteCount = 10'000;
    std::size_t rounds = 5;
    std::string only;
    std::filesystem::path folder;
};

std::optional<std::size_t> number(std::string_view text, std::size_t least) {
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && value >= least ? std::optional(value) : std::nullopt;
}

std::optional<Arguments> parse(int count, char** words) {
    Arguments arguments;
    arguments.folder = std::filesystem::path(words[0]).parent_path();
    for (int i = 1; i < count; i += 2) {
        const std::string_view option = words[i];
        if (i + 1 == count) return std::nullopt;
        const std::string_view value = words[i + 1];
        if (option == "--folder") {
            arguments.folder = value;
            continue;
        }
        if (option == "--only") {
            const bool isStoreJob = std::ranges::count(storeJobNames, value) > 0;
            if (!isStoreJob && value != canonicalJobName) return std::nullopt;
            arguments.only = value;
            continue;
        }
        const auto wanted = number(value, option == "--notes" ? 1000 : 1);
        if (!wanted) return std::nullopt;
        if (option == "--notes") {
            arguments.noteCount = *wanted;
        } else if (option == "--rounds") {
            arguments.rounds = *wanted;
        } else {
            return std::nullopt;
        }
    }
    return arguments;
}

int run(const Arguments& arguments) {
    auto rows = storeJobs({
        .folder = arguments.folder / "bench-libraries",
        .noteCount = arguments.noteCount,
        .rounds = arguments.rounds,
        .only = arguments.only,
    });
    if (arguments.only.empty() || arguments.only == canonicalJobName) {
        const auto more = bodyJobs(std::min(arguments.noteCount, mostBodies), arguments.rounds);
        rows.insert(rows.end(), more.begin(), more.end());
    }
    std::cout << machineLine() << "\n\n";
    print(std::cout, rows);
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace tesserine::bench

int main(int count, char** words) {
    if (count == 2 && std::string_view(words[1]) == "--help") {
        std::cout << tesserine::bench::usage;
        return EXIT_SUCCESS;
    }
    const auto arguments = tesserine::bench::parse(count, words);
    if (!arguments) {
        std::cerr << tesserine::bench::usage;
        return 2;
    }
    try {
        return tesserine::bench::run(*arguments);
    } catch (const std::exception& error) {
        std::cerr << "tesserine-bench: " << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
