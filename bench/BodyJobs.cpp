#include "bench/BodyJobs.h"

#include "bench/NoteGenerator.h"
#include "core/body/CanonicalBody.h"

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tesserine::bench {
namespace {

constexpr double wantedBytesPerSecond = 80e6;

/// The least that any rewriting of HTML does: look at each byte once, copy it, and copy what stands
/// outside tags a second time.
struct BytePass {
    std::string html;
    std::string text;

    void run(std::string_view source) {
        html.clear();
        text.clear();
        bool isInTag = false;
        for (const char c : source) {
            html += c;
            if (c == '<') {
                isInTag = true;
            } else if (c == '>') {
                isInTag = false;
            } else if (!isInTag) {
                text += c;
            }
        }
    }
};

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

/// The body as a word processor or a web page puts it on the clipboard.
std::string asPasted(std::string html) {
    constexpr std::array rules = {
        std::pair{"<p>", R"(<P class="MsoNormal" style="margin: 0cm; text-align:left">)"},
        std::pair{"</p>", "</P>\n"},
        std::pair{"<strong>", R"(<b style='font-weight:bold'>)"},
        std::pair{"</strong>", "</b>"},
        std::pair{"<em>", "<i>"},
        std::pair{"</em>", "</i>"},
        std::pair{"<li>", R"~(<li class=item><span style="color: rgb(51, 51, 51)">)~"},
        std::pair{"</li>", "</span>\n"},
        std::pair{" href=", R"~( target="_blank" rel=noopener onclick="track()" HREF=)~"},
        std::pair{"<h2>", R"(<h2 id="heading"><font color="#1a2b3c">)"},
        std::pair{"</h2>", "</font></h2>"},
    };
    for (const auto& [from, to] : rules) {
        replaceAll(html, from, to);
    }
    return "<html><head><title>x</title><style>p { margin: 0 }</style></head><body>\n" + html
           + "\n<!-- end --></body></html>";
}

Row measure(const std::string& job, const std::vector<std::string>& bodies, std::size_t rounds) {
    std::size_t byteCount = 0;
    for (const std::string& body : bodies) {
        byteCount += body.size();
    }
    BytePass pass;
    std::size_t passed = 0;
    std::size_t written = 0;
    const Comparison times = alternate(
        rounds * 2 + 1,
        [&] {
            passed = 0;
            return secondsOf([&] {
                for (const std::string& body : bodies) {
                    pass.run(body);
                    passed += pass.html.size();
                }
            });
        },
        [&] {
            written = 0;
            return secondsOf([&] {
                for (const std::string& body : bodies) {
                    written += canonicalBody(body).html.size();
                }
            });
        });
    if (passed != byteCount || written == 0) throw std::runtime_error(job + ": work was left out");
    const auto text = [&](double seconds) { return megabytesPerSecond(byteCount, seconds); };
    Row row = rowOf(job, times, text);
    row.goal = "≥ 80 MB/s";
    row.isReached = static_cast<double>(byteCount) / times.ours >= wantedBytesPerSecond;
    return row;
}

}  // namespace

std::vector<Row> bodyJobs(std::size_t noteCount, std::size_t rounds) {
    const NoteGenerator generator(noteCount);
    std::vector<std::string> stored;
    std::vector<std::string> pasted;
    for (std::size_t place = 0; place < noteCount; ++place) {
        stored.push_back(generator.note(place).html);
        pasted.push_back(asPasted(stored.back()));
    }
    return {
        measure("make stored bodies canonical", stored, rounds),
        measure("make pasted bodies canonical", pasted, rounds),
    };
}

}  // namespace tesserine::bench
