#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tesserine {

/// The attributes of a start tag. Valid during the call that hands them over.
class XMLAttributes {
public:
    /// `pairs`: names and values in turn, then a null pointer; or null.
    explicit XMLAttributes(const char* const* pairs) : pairs_(pairs) {}
    /// Empty when there is none of this name.
    std::string_view value(std::string_view name) const;

private:
    const char* const* pairs_;
};

/// Is told what stands in a stream of XML. It may throw.
class XMLHandler {
public:
    XMLHandler() = default;
    XMLHandler(const XMLHandler&) = delete;
    XMLHandler& operator=(const XMLHandler&) = delete;
    virtual ~XMLHandler() = default;

    virtual void open(std::string_view name, const XMLAttributes& attributes) = 0;
    virtual void close(std::string_view name) = 0;
    /// A piece of text; there may be several in a row.
    virtual void text(std::string_view text) = 0;
};

/// Reads XML that arrives in pieces, and knows where in the file it is.
///
/// Safe with hostile input: nothing outside is fetched, a document that declares entities is
/// refused before one of them is used, nesting and the length of a tag or comment are bounded. No
/// recursion, linear. Reads UTF-8, UTF-16, ISO 8859-1, ASCII and Windows-1252.
class XMLStream {
public:
    static constexpr std::size_t mostDepth = 1'000;
    /// Longer tags and comments are refused.
    static constexpr std::size_t mostTokenBytes = 4'000'000;

    enum class Trouble {
        none,
        malformed,  ///< is no XML any more; or too deep, or a tag is too long
        entities,   ///< declares entities
        encoding,   ///< is in an encoding that is not known
        truncated,  ///< ended before its root element did
    };

    /// `offset` is where in the file the first byte stands. With `root` the stream begins somewhere
    /// inside the element of that name, of whose start tag the handler is not told; it is then in
    /// `encoding`, UTF-8 unless named.
    XMLStream(
        XMLHandler& handler,
        std::uint64_t offset,
        std::string_view root = {},
        const std::string& encoding = {});
    XMLStream(const XMLStream&) = delete;
    XMLStream& operator=(const XMLStream&) = delete;
    ~XMLStream();

    /// Reads on and tells the handler, until there is trouble. What the handler throws comes out
    /// here, and ends the stream.
    Trouble feed(std::string_view bytes, bool isLast);

    /// Where in the file that begins which the handler is being told, or which caused the trouble.
    std::uint64_t position() const;
    /// Where it ends.
    std::uint64_t positionAfter() const;
    /// What is wrong, as part of a sentence.
    std::string reason() const;

private:
    struct Parser;
    std::unique_ptr<Parser> parser_;
};

}  // namespace tesserine
