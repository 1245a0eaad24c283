#include "core/import/XMLStream.h"

#include "base/Text.h"
#include "core/import/TextDecoding.h"

#include <expat.h>

#include <exception>
#include <iterator>
#include <new>

namespace tesserine {

std::string_view XMLAttributes::value(std::string_view name) const {
    if (pairs_ == nullptr) return {};
    for (const char* const* pair = pairs_; *pair != nullptr; pair += 2) {
        if (*pair == name) return pair[1];
    }
    return {};
}

struct XMLStream::Parser {
    struct Free {
        void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
    };

    Parser(XMLHandler& told, const char* encoding)
        : handler(told), expat(XML_ParserCreate(encoding)) {
        if (expat == nullptr) throw std::bad_alloc();
        XML_SetUserData(expat.get(), this);
        XML_SetElementHandler(expat.get(), &opened, &closed);
        XML_SetCharacterDataHandler(expat.get(), &texted);
        XML_SetEntityDeclHandler(expat.get(), &declared);
        XML_SetUnknownEncodingHandler(expat.get(), &encoded, nullptr);
    }

    void stop(Trouble why, const char* words) {
        trouble = why;
        reason = words;
        XML_StopParser(expat.get(), XML_FALSE);
    }

    /// Exceptions must not pass through the library: they wait until it has returned.
    template <class Work>
    void guarded(Work work) noexcept {
        if (trouble != Trouble::none || failure) return;
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
            XML_StopParser(expat.get(), XML_FALSE);
        }
    }

    static Parser& of(void* data) { return *static_cast<Parser*>(data); }
    static void XMLCALL opened(void* data, const char* name, const char** attributes) {
        Parser& self = of(data);
        if (++self.depth > mostDepth) {
            return self.stop(Trouble::malformed, "elements are nested too deep");
        }
        if (self.isStarting) return;
        self.guarded([&] { self.handler.open(name, XMLAttributes(attributes)); });
    }
    static void XMLCALL closed(void* data, const char* name) {
        Parser& self = of(data);
        --self.depth;
        self.guarded([&] { self.handler.close(name); });
    }
    static void XMLCALL texted(void* data, const char* text, int length) {
        Parser& self = of(data);
        self.guarded([&] { self.handler.text({text, static_cast<std::size_t>(length)}); });
    }
    static void XMLCALL declared(
        void* data,
        const char* /*name*/,
        int /*isParameter*/,
        const char* /*value*/,
        int /*length*/,
        const char* /*base*/,
        const char* /*systemID*/,
        const char* /*publicID*/,
        const char* /*notation*/) {
        of(data).stop(Trouble::entities, "it declares entities of its own");
    }
    static int XMLCALL encoded(void* /*data*/, const char* name, XML_Encoding* encoding) {
        if (text::asciiLowercased(name) != "windows-1252") return XML_STATUS_ERROR;
        for (std::size_t byte = 0; byte < std::size(encoding->map); ++byte) {
            encoding->map[byte] = windows1252Character(static_cast<std::uint8_t>(byte));
        }
        encoding->convert = nullptr;  // every byte is a character
        encoding->release = nullptr;
        return XML_STATUS_OK;
    }

    XMLHandler& handler;
    std::unique_ptr<XML_ParserStruct, Free> expat;
    std::uint64_t offset = 0;  // in the file, of what is at 0 for the parser
    std::uint64_t fed = 0;     // up to here in the file
    std::size_t depth = 0;
    bool isStarting = false;
    Trouble trouble = Trouble::none;
    std::string reason;
    std::exception_ptr failure;
};

XMLStream::XMLStream(
    XMLHandler& handler, std::uint64_t offset, std::string_view root, const std::string& encoding)
    : parser_(std::make_unique<Parser>(handler, encoding.empty() ? nullptr : encoding.c_str())) {
    parser_->fed = offset;
    parser_->offset = offset;
    if (root.empty()) return;
    const std::string tag = "<" + std::string(root) + ">";
    parser_->isStarting = true;
    XML_Parse(parser_->expat.get(), tag.data(), static_cast<int>(tag.size()), XML_FALSE);
    parser_->isStarting = false;
    parser_->offset -= tag.size();  // may pass below 0 and comes back when it is added to
}

XMLStream::~XMLStream() = default;

XMLStream::Trouble XMLStream::feed(std::string_view bytes, bool isLast) {
    Parser& parser = *parser_;
    XML_Parser expat = parser.expat.get();
    const auto status = XML_Parse(
        expat, bytes.data(), static_cast<int>(bytes.size()), isLast ? XML_TRUE : XML_FALSE);
    parser.fed += bytes.size();
    if (parser.failure) std::rethrow_exception(parser.failure);
    if (parser.trouble != Trouble::none) return parser.trouble;
    if (status == XML_STATUS_OK) {
        if (parser.fed - position() > mostTokenBytes) {
            parser.stop(Trouble::malformed, "a part of it is too long");
        }
        return parser.trouble;
    }
    const XML_Error error = XML_GetErrorCode(expat);
    const bool isCut =
        isLast && XML_GetCurrentByteIndex(expat) >= 0
        && (error == XML_ERROR_NO_ELEMENTS || error == XML_ERROR_UNCLOSED_TOKEN
            || error == XML_ERROR_PARTIAL_CHAR || error == XML_ERROR_UNCLOSED_CDATA_SECTION);
    parser.trouble = isCut ? Trouble::truncated : Trouble::malformed;
    if (error == XML_ERROR_UNKNOWN_ENCODING) parser.trouble = Trouble::encoding;
    parser.reason = XML_ErrorString(error);
    return parser.trouble;
}

std::uint64_t XMLStream::position() const {
    const XML_Index index = XML_GetCurrentByteIndex(parser_->expat.get());
    return index < 0 ? parser_->fed : parser_->offset + static_cast<std::uint64_t>(index);
}

std::uint64_t XMLStream::positionAfter() const {
    const int count = XML_GetCurrentByteCount(parser_->expat.get());
    return position() + static_cast<std::uint64_t>(count);
}

std::string XMLStream::reason() const { return parser_->reason; }

}  // namespace tesserine
