#pragma once

#include "search/SearchResponse.h"
#include "search/SearchSuggestions.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace tesserine {
class SerialQueue;
}

namespace tesserine::app {

class AppEnvironment;

/// What a search found, with what was searched for.
struct SearchAnswer {
    QString text{};
    bool isExact = false;  ///< searched as typed, nothing corrected
    SearchResponse response{};
    /// What the query was understood to ask for, with markers around what was typed.
    std::string explanation{};
};

/// Searches on a thread of its own, so that typing never waits. Only the answer to what was asked
/// last is sent: an older question that was not begun is dropped, and its answer is not shown.
///
/// Belongs to the main thread.
class SearchRunner final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SearchRunner)

public:
    static constexpr std::int64_t mostResults = 200;

    explicit SearchRunner(AppEnvironment& environment, QObject* parent = nullptr);
    ~SearchRunner() override;

    enum class Typing { finished, goesOn };
    /// Asks for what `text` finds; with `exact` nothing typed is corrected.
    void search(const QString& text, Typing typing, bool isExact = false);
    /// Drops the question that was asked last.
    void forget();
    /// Asks what may be typed next; the answer comes with the same text.
    void suggest(const QString& typed);

signals:
    void answered(const tesserine::app::SearchAnswer& answer);
    /// A sentence for the user.
    void failed(const QString& sentence);
    void suggested(
        const QString& typed, const std::vector<tesserine::SearchSuggestion>& suggestions);

private:
    class Desk;
    /// Does the work on the queue while its answer is still waited for, and tells its failure.
    void run(std::function<bool()> isAwaited, std::function<void(Desk&)> work);

    AppEnvironment& environment_;
    std::atomic<int> asked_ = 0;
    std::atomic<int> suggestionsAsked_ = 0;
    std::unique_ptr<Desk> desk_;          // touched on queue_ only
    std::unique_ptr<SerialQueue> queue_;  // last: it ends before what its tasks touch
};

}  // namespace tesserine::app
