#include "base/network/CurlSession.h"

#include "base/OperationCancelled.h"
#include "base/Text.h"
#include "base/WebAddress.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <utility>

namespace tesserine {
namespace {

constexpr std::size_t headLimit = std::size_t{256} << 10;  // bytes of all headers of one reply

template <auto free>
struct FreedBy {
    void operator()(auto* handle) const { free(handle); }
};
using Easy = std::unique_ptr<CURL, FreedBy<curl_easy_cleanup>>;
using Multi = std::unique_ptr<CURLM, FreedBy<curl_multi_cleanup>>;
using HeaderList = std::unique_ptr<curl_slist, FreedBy<curl_slist_free_all>>;

/// What the callbacks of one transfer read and fill. No exception may pass through C, so the first
/// one waits here for the end.
struct Transfer {
    const HTTPRequest& request;
    CURL* easy = nullptr;
    HTTPReply reply{};
    std::size_t sent = 0;
    std::size_t headBytes = 0;
    std::size_t bodyBytes = 0;
    bool headEnded = false;
    bool isTooLarge = false;
    std::exception_ptr error{};
};

template <class Body>
std::size_t guarded(Transfer& transfer, std::size_t atFailure, Body body) {
    try {
        return body();
    } catch (...) {
        transfer.error = std::current_exception();
        return atFailure;
    }
}

int statusOf(CURL* easy) {
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    return static_cast<int>(status);
}

bool isSuccess(int status) { return status >= 200 && status < 300; }

std::size_t onBody(char* data, std::size_t /*one*/, std::size_t count, void* user) {
    auto& transfer = *static_cast<Transfer*>(user);
    return guarded(transfer, 0, [&]() -> std::size_t {
        if (count > transfer.request.replyLimit - transfer.bodyBytes) {
            transfer.isTooLarge = true;
            return 0;
        }
        transfer.bodyBytes += count;
        const auto& sink = transfer.request.sink;
        if (sink && isSuccess(statusOf(transfer.easy))) {
            sink({data, count});
        } else {
            transfer.reply.body.append(data, count);
        }
        return count;
    });
}

void takeHeaderLine(Transfer& transfer, std::string_view line) {
    if (line.starts_with("HTTP/")) {  // also after an interim reply such as 100
        transfer.reply.headers.clear();
        return;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return;
    transfer.reply.headers.push_back(
        {std::string(line.substr(0, colon)), std::string(text::trimmed(line.substr(colon + 1)))});
}

std::size_t onHeader(char* data, std::size_t /*one*/, std::size_t count, void* user) {
    auto& transfer = *static_cast<Transfer*>(user);
    return guarded(transfer, 0, [&]() -> std::size_t {
        transfer.headBytes += count;
        if (transfer.headBytes > headLimit) {
            transfer.isTooLarge = true;
            return 0;
        }
        const std::string_view line(data, count);
        transfer.headEnded = line == "\r\n" || line == "\n";
        takeHeaderLine(transfer, line);
        return count;
    });
}

std::size_t onRead(char* buffer, std::size_t /*one*/, std::size_t room, void* user) {
    auto& transfer = *static_cast<Transfer*>(user);
    const std::string& body = *transfer.request.body;
    const std::size_t count = std::min(room, body.size() - transfer.sent);
    std::memcpy(buffer, body.data() + transfer.sent, count);
    transfer.sent += count;
    return count;
}

/// Asked when a kept connection was lost and the request would be sent once more.
int onRewind(void* user, curl_off_t offset, int /*origin*/) {
    auto& transfer = *static_cast<Transfer*>(user);
    if (!transfer.request.isRepeatable) return CURL_SEEKFUNC_FAIL;
    transfer.sent = static_cast<std::size_t>(offset);
    return CURL_SEEKFUNC_OK;
}

bool hasControlCharacter(std::string_view text) {
    return std::ranges::any_of(text, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7F;
    });
}

void append(HeaderList& list, const std::string& line) {
    curl_slist* const grown = curl_slist_append(list.get(), line.c_str());
    if (grown == nullptr) throw std::bad_alloc();
    std::ignore = list.release();
    list.reset(grown);
}

HeaderList headerList(const HTTPRequest& request) {
    HeaderList list;
    bool hasContentType = false;
    for (const HTTPHeader& header : request.headers) {
        if (hasControlCharacter(header.name) || hasControlCharacter(header.value)) {
            throw HTTPError(HTTPError::Kind::badRequest, "a header holds a control character");
        }
        hasContentType |= text::asciiLowercased(header.name) == "content-type";
        // An empty value would take the header away.
        append(list, header.name + (header.value.empty() ? ";" : ": " + header.value));
    }
    append(list, "Expect:");  // do not wait for leave to send a long body
    if (!hasContentType) append(list, "Content-Type:");  // do not call the body a form
    return list;
}

void setBody(CURL* easy, Transfer& transfer) {
    const HTTPRequest& request = transfer.request;
    if (request.body) {
        curl_easy_setopt(easy, CURLOPT_POST, 1L);
        const auto size = static_cast<curl_off_t>(request.body->size());
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, size);
        curl_easy_setopt(easy, CURLOPT_READFUNCTION, onRead);
        curl_easy_setopt(easy, CURLOPT_READDATA, &transfer);
        curl_easy_setopt(easy, CURLOPT_SEEKFUNCTION, onRewind);
        curl_easy_setopt(easy, CURLOPT_SEEKDATA, &transfer);
    } else if (request.method == "POST" || request.method == "PUT") {
        curl_easy_setopt(easy, CURLOPT_POST, 1L);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, "");
    }
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request.method.c_str());
}

/// Runs the transfer to its end; `stop` wakes the wait, so a cancelled call returns at once.
CURLcode perform(CURLM* multi, CURL* easy, const std::stop_token& stop) {
    const std::stop_callback wake(stop, [multi] { curl_multi_wakeup(multi); });
    if (curl_multi_add_handle(multi, easy) != CURLM_OK) return CURLE_FAILED_INIT;
    for (int running = 1;;) {
        if (stop.stop_requested()) throw OperationCancelled();
        if (curl_multi_perform(multi, &running) != CURLM_OK) return CURLE_FAILED_INIT;
        if (running == 0) break;
        curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
    }
    int left = 0;
    const CURLMsg* const message = curl_multi_info_read(multi, &left);
    return message == nullptr ? CURLE_FAILED_INIT : message->data.result;
}

HTTPError::Kind kindOf(CURLcode code) {
    switch (code) {
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR: return HTTPError::Kind::untrusted;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL:  // the address was judged before: the reply is no HTTP/1 or 2
    case CURLE_BAD_CONTENT_ENCODING: return HTTPError::Kind::malformed;
    case CURLE_URL_MALFORMAT: return HTTPError::Kind::badRequest;
    default: return HTTPError::Kind::unreachable;
    }
}

/// libcurl's own messages may name the host or quote a header.
std::string causeOf(CURLcode code) {
    if (kindOf(code) == HTTPError::Kind::malformed) return "no status";
    return std::string(curl_easy_strerror(code)) + " (" + std::to_string(code) + ")";
}

void check(const Transfer& transfer, CURLcode code) {
    if (transfer.error) std::rethrow_exception(transfer.error);
    if (transfer.isTooLarge) {
        throw HTTPError(HTTPError::Kind::tooLarge, "the reply is too large");
    }
    if (code != CURLE_OK) throw HTTPError(kindOf(code), causeOf(code));
    // libcurl takes a reply that ends right after its status line for a whole one.
    if (!transfer.headEnded) {
        throw HTTPError(HTTPError::Kind::unreachable, "the reply ended within its head");
    }
}

void judge(const HTTPRequest& request) {
    const auto address = WebAddress::parse(request.url);
    const bool isWeb = address && (address->scheme == "https" || address->scheme == "http")
                       && !address->host.empty() && !address->hasUserInfo;
    if (!isWeb) throw HTTPError(HTTPError::Kind::badRequest, "the address is no web address");
}

void initialiseOnce() {
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK) {
        throw HTTPError(HTTPError::Kind::unreachable, "the network library does not start");
    }
}

}  // namespace

/// Handles of one running call; between calls they keep its connection.
struct CurlSession::Lane {
    Multi multi{curl_multi_init()};
    Easy easy{curl_easy_init()};
};

/// Takes an idle lane, or a new one, and gives it back clean.
class CurlSession::Loan {
public:
    explicit Loan(CurlSession& session) : session_(session) {
        const std::scoped_lock lock(session.mutex_);
        if (session.idle_.empty()) {
            lane_ = std::make_unique<Lane>();
            if (!lane_->multi || !lane_->easy) throw std::bad_alloc();
            return;
        }
        lane_ = std::move(session.idle_.back());
        session.idle_.pop_back();
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan() {
        curl_multi_remove_handle(lane_->multi.get(), lane_->easy.get());
        curl_easy_reset(lane_->easy.get());  // keeps the connection
        const std::scoped_lock lock(session_.mutex_);
        session_.idle_.push_back(std::move(lane_));
    }
    CURL* easy() const { return lane_->easy.get(); }
    CURLM* multi() const { return lane_->multi.get(); }

private:
    CurlSession& session_;
    std::unique_ptr<Lane> lane_;
};

CurlSession::CurlSession(HTTPSession::Options options) : options_(std::move(options)) {
    initialiseOnce();
}
CurlSession::~CurlSession() = default;

HTTPReply CurlSession::send(const HTTPRequest& request, const std::stop_token& stop) {
    judge(request);
    const HeaderList headers = headerList(request);
    Transfer transfer{.request = request};
    const Loan loan(*this);  // last, so that it ends before what the callbacks use

    CURL* const easy = loan.easy();
    transfer.easy = easy;
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);  // do not wait for a stuck name look-up
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(easy, CURLOPT_USERAGENT, options_.userAgent.c_str());
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "gzip");
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    const auto connect = static_cast<long>(options_.connectTimeout.count());
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, connect);
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
    const auto inactivity = static_cast<long>(request.inactivity.count());
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME, inactivity);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, &transfer);
    if (!options_.usesProxy) curl_easy_setopt(easy, CURLOPT_PROXY, "");
    if (!options_.trustedCertificates.empty()) {
        curl_blob certificates{};
        certificates.data = const_cast<char*>(options_.trustedCertificates.data());
        certificates.len = options_.trustedCertificates.size();
        certificates.flags = CURL_BLOB_NOCOPY;
        curl_easy_setopt(easy, CURLOPT_CAINFO_BLOB, &certificates);
    }
    setBody(easy, transfer);

    check(transfer, perform(loan.multi(), easy, stop));
    transfer.reply.status = statusOf(easy);
    return std::move(transfer.reply);
}

}  // namespace tesserine
