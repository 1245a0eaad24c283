#include "server/CommandLine.h"

#include "base/WebAddress.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

namespace tesserine::server {
namespace {

constexpr std::array<std::string_view, 7> optionNames{
    "data", "listen", "public-url", "certificate", "key", "record-quota", "file-quota"};

/// Options with their values, and the words that are left.
struct Words {
    std::map<std::string, std::string> options;
    std::vector<std::string> others;

    explicit Words(const std::vector<std::string>& words) {
        for (std::size_t i = 0; i < words.size(); ++i) {
            const std::string& word = words[i];
            if (!word.starts_with("--")) {
                others.push_back(word);
                continue;
            }
            const std::string name = word.substr(2);
            if (std::ranges::find(optionNames, name) == optionNames.end()) {
                throw UsageError("There is no option " + word + ".");
            }
            if (i + 1 == words.size()) throw UsageError(word + " needs a value.");
            options[name] = words[++i];
        }
    }

    std::optional<std::string> option(const std::string& name) const {
        const auto found = options.find(name);
        return found == options.end() ? std::nullopt : std::optional(found->second);
    }

    std::optional<std::int64_t> megabytes(const std::string& name) const {
        const auto text = option(name);
        if (!text) return std::nullopt;
        std::int64_t number = 0;
        const char* const end = text->data() + text->size();
        const auto [read, problem] = std::from_chars(text->data(), end, number);
        const bool isNumber =
            problem == std::errc{} && read == end && number >= 0 && number <= INT32_MAX;
        if (!isNumber) throw UsageError("--" + name + " takes whole megabytes.");
        return number * 1'000'000;
    }
};

HTTPFront::Options listening(const Words& words) {
    HTTPFront::Options options;
    if (const auto where = words.option("listen")) {
        const auto address = WebAddress::parse("http://" + *where);
        if (!address || address->host.empty() || !address->port) {
            throw UsageError("--listen takes HOST:PORT.");
        }
        options.host = address->host;
        options.port = *address->port;
    }
    options.certificate = words.option("certificate");
    options.key = words.option("key");
    if (options.certificate.has_value() != options.key.has_value()) {
        throw UsageError("--certificate and --key go together.");
    }
    return options;
}

/// Where people on this computer reach it; one that listens everywhere goes by the usual name.
std::string ownURL(const HTTPFront::Options& listening) {
    const bool isEverywhere = listening.host == "0.0.0.0" || listening.host == "[::]";
    return std::string(listening.certificate ? "https://" : "http://")
           + (isEverywhere ? "localhost" : listening.host) + ":" + std::to_string(listening.port);
}

}  // namespace

const char* const CommandLine::usage = R"(Usage:
  tesserine-server --data DIR user add EMAIL
  tesserine-server --data DIR serve [--listen HOST:PORT] [--public-url URL]
                   [--certificate FILE --key FILE] [--record-quota MB] [--file-quota MB]

“user add” reads the password from standard input; for an address that is there it sets a new one.
)";

CommandLine CommandLine::parse(const std::vector<std::string>& words) {
    if (words == std::vector<std::string>{"--help"}) return {};
    const Words read(words);
    const auto& others = read.others;
    const bool adds = others.size() == 3 && others[0] == "user" && others[1] == "add";
    const bool serves = others.size() == 1 && others[0] == "serve";
    if (!adds && !serves) throw UsageError("There is no such command.");
    if (!read.option("data")) throw UsageError("--data is missing.");
    CommandLine line;
    line.command = adds ? Command::addUser : Command::serve;
    if (adds) line.email = others[2];
    line.service.folder = *read.option("data");
    line.service.quotas.records = read.megabytes("record-quota");
    line.service.quotas.files = read.megabytes("file-quota");
    line.listening = server::listening(read);
    line.service.publicURL = read.option("public-url").value_or(ownURL(line.listening));
    return line;
}

}  // namespace tesserine::server
