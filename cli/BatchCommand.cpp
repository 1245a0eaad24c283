#include "base/JSON.h"
#include "base/Text.h"
#include "cli/BatchOperations.h"
#include "cli/CommandError.h"
#include "cli/Session.h"

#include <istream>

namespace tesserine::cli {

namespace {

/// A line is one operation; this is room for the largest attachment in base64.
constexpr std::size_t longestLine = 140'000'000;

/// Reads lines of bounded length.
class LineReader {
public:
    explicit LineReader(std::istream& input) : buffer_(*input.rdbuf()) {}

    enum class Result { line, tooLong, end };
    /// A line that is too long is read to its end and dropped.
    Result next(std::string& line) {
        using Traits = std::char_traits<char>;
        line.clear();
        bool isTooLong = false;
        bool isEmpty = true;
        for (auto c = buffer_.sbumpc(); c != Traits::eof(); c = buffer_.sbumpc()) {
            if (c == '\n') return isTooLong ? Result::tooLong : Result::line;
            isEmpty = false;
            isTooLong = isTooLong || line.size() == longestLine;
            if (!isTooLong) line.push_back(Traits::to_char_type(c));
        }
        if (isEmpty) return Result::end;
        return isTooLong ? Result::tooLong : Result::line;
    }

private:
    std::streambuf& buffer_;
};

boost::json::object refusal(const std::string& sentence) {
    return {{"ok", false}, {"error", text::sanitized(sentence)}};
}

boost::json::object parseOperation(const std::string& line) {
    try {
        boost::json::value parsed = json::parse(line, {.byteCount = longestLine});
        if (parsed.is_object()) return std::move(parsed.as_object());
    } catch (const json::JSONError&) {
        // Said below; the error does not matter to who wrote the line.
    }
    throw CommandError::badInput("The line is not a JSON object.");
}

/// Answers one line after its change is on disk; a refusal leaves the library as it was.
boost::json::object answerTo(Session& session, const std::string& line) {
    StoreContext& context = session.context();
    try {
        boost::json::object result = BatchOperations(session).apply(parseOperation(line));
        context.save();
        boost::json::object answer{{"ok", true}};
        for (auto& [key, value] : result) {
            answer[key] = std::move(value);
        }
        return answer;
    } catch (const UserError& error) {
        context.rollback();
        return refusal(error.what());
    }
}

void runBatch(Session& session) {
    LineReader reader(session.environment().input);
    std::string line;
    while (true) {
        const auto read = reader.next(line);
        session.throwIfStopped();
        if (read == LineReader::Result::end) return;
        if (read == LineReader::Result::line && text::isBlank(text::sanitized(line))) continue;
        session.output().json(
            read == LineReader::Result::tooLong ? refusal("The line is too long.")
                                                : answerTo(session, line));
        session.output().flush();
        // The next operation sees what others wrote meanwhile, and memory does not grow.
        session.context().reset();
        session.releaseNames();
        session.throwIfStopped();
    }
}

ExitStatus batch(Session& session, const Arguments&) {
    session.context();
    try {
        runBatch(session);
    } catch (const OutputError& error) {
        // Somebody who cannot be answered must not be told that all went well.
        if (error.kind() == OutputError::Kind::failed) throw;
        throw CommandError::badInput("Nobody reads the answers any more, so the batch stopped.");
    }
    return ExitStatus::done;
}

}  // namespace

std::vector<Command> batchCommands() {
    return {
        {.path = "batch",
         .summary = "Reads operations as JSON lines and answers each after it is on disk",
         .access = Access::writes,
         .details =
             "Operations: note.add {id?, title, html | markdown | text, notebook?, tags?, "
             "sourceURL?}, note.set {id, title?, html | markdown | text?, ifVersion?}, note.trash, "
             "note.restore, note.delete, note.pin, note.unpin {id}, attachment.add {note, filename, "
             "mimeType?, base64}, task.add {id?, sentence}, task.done {id}, search {query, limit?}, "
             "group {ops}: all of them in one save, or none. The field “op” names the operation. An "
             "answer holds “ok”, and “id”, what was found, or “error”; a refusal does not end the "
             "run. Repeating an operation with the same id is harmless.",
         .example = R"(echo '{"op": "note.add", "title": "Plan"}' | tesserine batch)",
         .run = batch}};
}

}  // namespace tesserine::cli
