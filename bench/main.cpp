#include "bench/AskJobs.h"
#include "bench/BodyJobs.h"
#include "bench/ExportJobs.h"
#include "bench/ImportJobs.h"
#include "bench/IndexJobs.h"
#include "bench/Measure.h"
#include "bench/QueryJobs.h"
#include "bench/RecurrenceJobs.h"
#include "bench/SentenceJobs.h"
#include "bench/ServiceJobs.h"
#include "bench/StoreJobs.h"
#include "bench/SyncJobs.h"
#include "bench/TaskJobs.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::bench {
namespace {

struct Arguments {
    std::size_t noteCount = 10'000;
    std::size_t rounds = 5;
    std::string only;
    std::filesystem::path folder;
};

/// More bodies than this say nothing new.
constexpr std::size_t mostBodies = 10'000;

/// What is measured besides the store.
struct Job {
    std::string_view name;
    std::vector<Row> (*run)(const Arguments& arguments);
};

constexpr auto jobs = std::to_array<Job>({
    {"canonical",
     [](const Arguments& arguments) {
         return bodyJobs(std::min(arguments.noteCount, mostBodies), arguments.rounds);
     }},
    {"recurrence", [](const Arguments& arguments) { return recurrenceJobs(arguments.rounds); }},
    {"sentences", [](const Arguments& arguments) { return sentenceJobs(arguments.rounds); }},
    {"tasks",
     [](const Arguments& arguments) {
         return taskJobs(arguments.folder / "bench-tasks", arguments.noteCount, arguments.rounds);
     }},
    {"import",
     [](const Arguments& arguments) {
         return importJobs(
             arguments.folder / "bench-import", arguments.noteCount, arguments.rounds);
     }},
    {"export",
     [](const Arguments& arguments) {
         return exportJobs(
             arguments.folder / "bench-export", arguments.noteCount, arguments.rounds);
     }},
    {"index",
     [](const Arguments& arguments) {
         return indexJobs(
             arguments.folder / "bench-coordinator", arguments.noteCount, arguments.rounds);
     }},
    {"ask",
     [](const Arguments& arguments) {
         return askJobs(arguments.folder / "bench-ask", arguments.noteCount, arguments.rounds);
     }},
    {"search",
     [](const Arguments& arguments) {
         return queryJobs(arguments.folder / "bench-index", arguments.noteCount, arguments.rounds);
     }},
    {"service",
     [](const Arguments& arguments) {
         return serviceJobs(arguments.folder / "bench-service", arguments.rounds);
     }},
    {"sync",
     [](const Arguments& arguments) {
         return syncJobs(arguments.folder / "bench-sync", arguments.noteCount, arguments.rounds);
     }},
});

std::string usage() {
    std::string names;
    for (const std::string_view name : storeJobNames) {
        names += std::string(name) + ", ";
    }
    for (const Job& job : jobs) {
        names += std::string(job.name) + (&job == &jobs.back() ? "" : ", ");
    }
    return R"(usage: tesserine-bench [--notes N] [--rounds N] [--only JOB] [--folder DIR]

Measures this build beside the raw limit of what it stands on, in turns, and prints a table.
  --notes N     notes in the sample library, at least 1,000 (default 10,000)
  --rounds N    how often each job is repeated (default 5)
  --only JOB    one of )"
           + names + R"(
  --folder DIR  where the libraries are made, in a folder "bench-libraries" that is removed
                (default: beside the program)
)";
}

bool isJob(std::string_view name) {
    return std::ranges::count(storeJobNames, name) > 0
           || std::ranges::count(jobs, name, &Job::name) > 0;
}

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
            if (!isJob(value)) return std::nullopt;
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
    for (const Job& job : jobs) {
        if (!arguments.only.empty() && arguments.only != job.name) continue;
        const auto more = job.run(arguments);
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
        std::cout << tesserine::bench::usage();
        return EXIT_SUCCESS;
    }
    const auto arguments = tesserine::bench::parse(count, words);
    if (!arguments) {
        std::cerr << tesserine::bench::usage();
        return 2;
    }
    try {
        return tesserine::bench::run(*arguments);
    } catch (const std::exception& error) {
        std::cerr << "tesserine-bench: " << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
