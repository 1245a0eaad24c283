#include "server/Pages.h"

#include "core/body/CanonicalBody.h"
#include "core/body/HTMLSerializer.h"

namespace tesserine::server::pages {
namespace {

constexpr const char* style = R"css(
    body { font: 17px/1.5 system-ui, sans-serif; max-width: 42rem; margin: 3rem auto; padding: 0 1rem;
           color: #222; background: #fff; }
    label { display: block; margin: 1rem 0 .25rem; } input { font: inherit; padding: .4rem; width: 20rem;
           max-width: 100%; } button { display: block; font: inherit; margin-top: 1.25rem; padding: .4rem 1rem; }
    img { max-width: 100%; } code { overflow-wrap: anywhere; }
    @media (prefers-color-scheme: dark) { body { color: #ddd; background: #1c1c1e; } a { color: #8ab4f8; } }
)css";

std::string escaped(std::string_view text) {
    std::string result;
    html::appendEscapedText(result, text);
    return result;
}

HTTPReply page(int status, std::string_view title, const std::string& content) {
    std::string body = "<!doctype html><html lang=\"en\"><head><meta charset=\"utf-8\">"
                       "<meta name=\"viewport\" content=\"width=device-width\"><title>";
    body += escaped(title) + "</title><style>" + style + "</style></head><body>";
    body += content + "</body></html>";
    return {
        .status = status,
        .headers =
            {{"Content-Type", "text/html; charset=utf-8"},
             {"Content-Security-Policy",
              "default-src 'none'; style-src 'unsafe-inline'; img-src data:; form-action 'self' "
              "tesserine:; base-uri 'none'; frame-ancestors 'none'"},
             {"Referrer-Policy", "no-referrer"},
             {"X-Content-Type-Options", "nosniff"},
             {"Cache-Control", "no-store"}},
        .body = std::move(body)};
}

/// With the caret where something is to be typed first.
std::string signInForm(std::string_view email) {
    std::string address;
    html::appendEscapedAttribute(address, email);
    const char* const focusOfAddress = email.empty() ? " autofocus" : "";
    const char* const focusOfPassword = email.empty() ? "" : " autofocus";
    return R"(<form method="post"><label for="email">Email</label>)"
           R"(<input id="email" name="email" type="email" autocomplete="username" required value=")"
           + address + "\"" + focusOfAddress
           + R"(><label for="password">Password</label>)"
             R"(<input id="password" name="password" type="password" )"
             R"(autocomplete="current-password" required)"
           + focusOfPassword + R"(><button>Sign in</button></form>)";
}

}  // namespace

HTTPReply signIn() {
    return page(200, "Sign in", "<h1>Sign in to Tesserine</h1>" + signInForm({}));
}

HTTPReply signInAgain(std::string_view email, std::string_view remark) {
    return page(
        403,
        "Sign in",
        "<h1>Sign in to Tesserine</h1><p role=\"alert\">" + escaped(remark) + "</p>"
            + signInForm(email));
}

HTTPReply signedIn(std::string_view callback) {
    const std::string address = escaped(callback);
    HTTPReply reply = page(
        200,
        "Signed in",
        "<h1>Signed in</h1><p><a href=\"" + address
            + "\">Go back to Tesserine</a></p><p>In the terminal, paste this address:</p><p><code>"
            + address + "</code></p>");
    reply.headers.push_back({"Refresh", "0; url=" + std::string(callback)});
    return reply;
}

HTTPReply note(std::string_view title, std::string_view html) {
    const std::string name = title.empty() ? "Untitled" : std::string(title);
    return page(
        200,
        name,
        "<article><h1>" + escaped(name) + "</h1>" + canonicalBody(html).html + "</article>");
}

HTTPReply notFound() {
    return page(404, "Not found", "<h1>Not found</h1><p>There is nothing at this address.</p>");
}

}  // namespace tesserine::server::pages
