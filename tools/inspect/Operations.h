#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Asks one rule of the program for its answer: what `tesserine-inspect` runs for each line.
namespace tesserine::inspect {

/// An input that an operation cannot read; `what()` says why.
class InputError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Takes the input of one line and returns its output. Throws `InputError`.
using Operation = std::function<boost::json::value(const boost::json::object& input)>;

/// The operations by name.
class Operations {
public:
    /// `name` is not in use yet.
    void add(std::string name, Operation operation);
    /// None for a name nobody added.
    const Operation* find(std::string_view name) const;

private:
    std::map<std::string, Operation, std::less<>> byName_;
};

/// The answer to one line, a JSON text without a line break:
/// `{"id": …, "output": …}` or `{"id": …, "error": "why"}`. Never throws for what the line holds.
std::string answer(const Operations& operations, std::string_view line);

/// Members of an input. A missing member or one of another type is an `InputError`, unless there is
/// something to take instead; null counts as missing.
const boost::json::value& member(const boost::json::object& input, std::string_view key);
std::string text(const boost::json::object& input, std::string_view key);
std::optional<std::string> optionalText(const boost::json::object& input, std::string_view key);
std::int64_t integer(const boost::json::object& input, std::string_view key);
std::int64_t integer(
    const boost::json::object& input, std::string_view key, std::int64_t otherwise);
std::optional<std::int64_t> optionalInteger(const boost::json::object& input, std::string_view key);
const boost::json::array& elements(const boost::json::object& input, std::string_view key);
bool truth(const boost::json::object& input, std::string_view key);
/// A list of texts; empty when it is missing.
std::vector<std::string> texts(const boost::json::object& input, std::string_view key);

/// One function for each room; a room's operations stand in a file of its own.
void addAIOperations(Operations& operations);
void addBaseOperations(Operations& operations);
void addBodyOperations(Operations& operations);
void addCryptoOperations(Operations& operations);
void addExportOperations(Operations& operations);
void addIndexOperations(Operations& operations);
void addQuickAddOperations(Operations& operations);
void addSearchOperations(Operations& operations);
void addServiceOperations(Operations& operations);
void addSyncOperations(Operations& operations);
void addSyncPlanOperations(Operations& operations);
void addTaskOperations(Operations& operations);
void addTaskServiceOperations(Operations& operations);
void addUpdateOperations(Operations& operations);

}  // namespace tesserine::inspect
