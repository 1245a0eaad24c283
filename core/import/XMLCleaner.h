#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tesserine {

/// Replaces, in a stream of XML, bytes that XML does not allow and other programs write
/// nevertheless: control characters by spaces, bytes that are no UTF-8 by question marks. The
/// length stays, so that places in the result are places in the stream. A stream that says it is in
/// another encoding than UTF-8 keeps its other bytes.
class XMLCleaner {
public:
    /// Where bytes were replaced in the last piece: the first and one past the last; equal if
    /// nowhere.
    struct Replaced {
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    /// The part of `bytes` at the front of the rest of the stream that can be judged now, cleaned;
    /// at most three bytes remain, and the next call begins with them. `isLast`: nothing follows.
    std::string clean(std::string_view bytes, bool isLast);
    const Replaced& replaced() const { return replaced_; }
    /// The encoding that the stream says it is in, once its beginning was seen; empty for none.
    const std::string& encodingName() const { return encodingName_; }

private:
    enum class Encoding : std::uint8_t { unknown, utf8, ascii, wide };

    void learnEncoding(std::string_view beginning);
    void replaceBadUTF8(std::string& piece);
    void replaceControls(std::string& piece);
    void replace(std::string& piece, std::size_t at, std::size_t count, char by);

    Encoding encoding_ = Encoding::unknown;
    std::string encodingName_;
    Replaced replaced_;
};

}  // namespace tesserine
