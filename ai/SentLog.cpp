#include "ai/SentLog.h"

#include "base/Encoding.h"
#include "base/Files.h"
#include "base/JSON.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>

namespace tesserine {
namespace {

using boost::json::object;
using boost::json::value;

constexpr std::uint64_t largestFile = std::uint64_t{64} << 20;

std::string lineOf(const SentRequest& request) {
    return json::write(object{
               {"sentAt", request.sentAt.iso()},
               {"destination", request.destination},
               {"purpose", request.purpose},
               {"titles", boost::json::array(request.titles.begin(), request.titles.end())},
               {"characterCount", request.characterCount}})
           + "\n";
}

std::string text(const object& line, const char* key) {
    const value* const found = line.if_contains(key);
    return found != nullptr && found->is_string() ? std::string(found->get_string()) : "";
}

std::optional<SentRequest> read(std::string_view line) {
    value parsed;
    try {
        parsed = json::parse(line);
    } catch (const json::JSONError&) {
        return std::nullopt;
    }
    if (!parsed.is_object()) return std::nullopt;
    const object& found = parsed.get_object();
    const auto sentAt = Instant::parseISO(text(found, "sentAt"));
    if (!sentAt) return std::nullopt;
    SentRequest request{
        .sentAt = *sentAt,
        .destination = text(found, "destination"),
        .purpose = text(found, "purpose")};
    if (const value* const count = found.if_contains("characterCount");
        count != nullptr && count->is_int64()) {
        request.characterCount =
            static_cast<std::size_t>(std::max<std::int64_t>(count->get_int64(), 0));
    }
    if (const value* const titles = found.if_contains("titles");
        titles != nullptr && titles->is_array()) {
        for (const value& title : titles->get_array()) {
            if (title.is_string()) request.titles.emplace_back(title.get_string());
        }
    }
    return request;
}

}  // namespace

void SentLog::add(const SentRequest& request) {
    std::vector<SentRequest> kept = all();
    if (kept.size() >= mostEntries) kept.resize(mostEntries - 1);
    std::string content;
    std::for_each(kept.rbegin(), kept.rend(), [&content](const SentRequest& earlier) {
        content += lineOf(earlier);
    });
    content += lineOf(request);
    files::createPrivateFolder(file_.parent_path());
    files::writeAtomically(file_, bytesOf(content));
}

std::vector<SentRequest> SentLog::all() const {
    std::error_code error;
    if (!std::filesystem::exists(file_, error)) return {};
    const Bytes bytes = files::read(file_, largestFile);
    std::vector<SentRequest> requests;
    std::string_view rest = textOf(bytes);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        if (auto request = read(rest.substr(0, end))) requests.push_back(*std::move(request));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    std::ranges::reverse(requests);
    return requests;
}

void SentLog::clear() { files::removeIfPresent(file_); }

}  // namespace tesserine
