#include "tools/inspect/Operations.h"

#include "base/JSON.h"

#include <cassert>
#include <exception>
#include <utility>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

/// Wide enough for every input a rule of ours bounds by itself.
constexpr json::Limits lineLimits{.byteCount = std::size_t{512} << 20, .depth = 1024};

value valueOf(std::string_view text) { return boost::json::string(text.data(), text.size()); }

const value* find(const object& input, std::string_view key) {
    const value* const found = input.if_contains({key.data(), key.size()});
    return found == nullptr || found->is_null() ? nullptr : found;
}

[[noreturn]] void fail(std::string_view key, std::string_view expected) {
    throw InputError("the input needs “" + std::string(key) + "”, " + std::string(expected));
}

value outputOf(const Operations& operations, const object& request) {
    static const object noInput;
    const Operation* const operation = operations.find(text(request, "op"));
    if (operation == nullptr) return "unsupported";
    const value* const input = find(request, "input");
    if (input == nullptr) return (*operation)(noInput);
    if (!input->is_object()) fail("input", "an object");
    return (*operation)(input->get_object());
}

}  // namespace

void Operations::add(std::string name, Operation operation) {
    const bool isNew = byName_.emplace(std::move(name), std::move(operation)).second;
    assert(isNew && "every operation has a name of its own");
    static_cast<void>(isNew);
}

const Operation* Operations::find(std::string_view name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : &found->second;
}

std::string answer(const Operations& operations, std::string_view line) {
    object reply;
    reply["id"] = nullptr;
    try {
        const value request = json::parse(line, lineLimits);
        if (!request.is_object()) throw InputError("the line is not an object");
        if (const value* const id = find(request.get_object(), "id")) reply["id"] = *id;
        reply["output"] = outputOf(operations, request.get_object());
    } catch (const std::exception& error) {
        reply["error"] = valueOf(error.what());
    }
    return json::write(reply);
}

const value& member(const object& input, std::string_view key) {
    const value* const found = find(input, key);
    if (found == nullptr) fail(key, "which is missing");
    return *found;
}

std::string text(const object& input, std::string_view key) {
    const value& found = member(input, key);
    if (!found.is_string()) fail(key, "a text");
    return {found.get_string().data(), found.get_string().size()};
}

std::optional<std::string> optionalText(const object& input, std::string_view key) {
    return find(input, key) == nullptr ? std::nullopt : std::optional(text(input, key));
}

std::int64_t integer(const object& input, std::string_view key) {
    const value& found = member(input, key);
    if (!found.is_int64()) fail(key, "a whole number");
    return found.get_int64();
}

std::int64_t integer(const object& input, std::string_view key, std::int64_t otherwise) {
    return find(input, key) == nullptr ? otherwise : integer(input, key);
}

std::optional<std::int64_t> optionalInteger(const object& input, std::string_view key) {
    return find(input, key) == nullptr ? std::nullopt : std::optional(integer(input, key));
}

const boost::json::array& elements(const object& input, std::string_view key) {
    const value& found = member(input, key);
    if (!found.is_array()) fail(key, "a list");
    return found.get_array();
}

bool truth(const object& input, std::string_view key) {
    const value& found = member(input, key);
    if (!found.is_bool()) throw InputError("“" + std::string(key) + "” is not true or false");
    return found.get_bool();
}

std::vector<std::string> texts(const object& input, std::string_view key) {
    std::vector<std::string> result;
    if (!input.contains(key)) return result;
    for (const value& element : elements(input, key)) {
        if (!element.is_string()) throw InputError("“" + std::string(key) + "” holds no texts");
        result.emplace_back(element.get_string());
    }
    return result;
}

}  // namespace tesserine::inspect
