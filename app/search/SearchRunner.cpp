#include "app/search/SearchRunner.h"

#include "app/state/AppEnvironment.h"
#include "base/SerialQueue.h"
#include "base/Text.h"
#include "search/QueryExplanation.h"
#include "search/QueryParser.h"
#include "search/RecentSearches.h"
#include "search/SearchCoordinator.h"
#include "search/SearchEngine.h"
#include "search/StoreQueryLibrary.h"

#include <optional>
#include <utility>

namespace tesserine::app {

/// What searches, on its own thread: a context, the engine over it, the calendar of the moment.
class SearchRunner::Desk {
public:
    explicit Desk(AppEnvironment& environment) : environment_(environment) {}

    SearchAnswer search(const SearchEngine::Request& request, const Calendar& calendar) {
        prepare(calendar);
        SearchAnswer answer{
            .text = QString::fromStdString(request.text),
            .isExact = request.effort == SearchEngine::Effort::asTyped};
        context_->reset();  // what it read for the last question may have changed
        try {
            answer.response = engine_->search(request);
        } catch (const SQLiteDatabase::Error& error) {
            if (!error.isDamage()) throw;
            environment_.search().rebuild();
            answer.response = engine_->search(request);
        }
        const QueryExplanation explanation{environment_.now(), *calendar_, synonyms_};
        answer.explanation = explanation.sentence(parseQuery(text::sanitized(request.text)));
        return answer;
    }

    std::vector<SearchSuggestion> suggest(const std::string& typed) {
        const auto recent = RecentSearches(environment_.preferences()).all();
        return SearchSuggestions(environment_.search().index()).suggest(typed, recent);
    }

private:
    /// Makes everything anew when the calendar or the synonyms have changed.
    void prepare(const Calendar& calendar) {
        auto synonyms = SearchSynonyms::load(environment_.preferences());
        const bool isSame = engine_ && calendar_->zone() == calendar.zone()
                            && calendar_->firstWeekday() == calendar.firstWeekday()
                            && synonyms_.groups == synonyms.groups;
        if (isSame) return;
        engine_.reset();
        library_.reset();
        calendar_ = calendar;
        synonyms_ = std::move(synonyms);
        if (!context_) context_ = environment_.store().newBackgroundContext();
        library_.emplace(*context_, environment_.clock(), *calendar_);
        engine_.emplace(SearchEngine::Setting{
            .index = environment_.search().index(),
            .library = &*library_,
            .clock = environment_.clock(),
            .calendar = *calendar_,
            .synonyms = synonyms_});
    }

    AppEnvironment& environment_;
    std::optional<Calendar> calendar_;
    SearchSynonyms synonyms_;
    std::unique_ptr<StoreContext> context_;
    std::optional<StoreQueryLibrary> library_;
    std::optional<SearchEngine> engine_;
};

SearchRunner::SearchRunner(AppEnvironment& environment, QObject* parent)
    : QObject(parent),
      environment_(environment),
      desk_(std::make_unique<Desk>(environment)),
      queue_(std::make_unique<SerialQueue>("windowSearch", environment.log())) {}

SearchRunner::~SearchRunner() {
    ++asked_;
    ++suggestionsAsked_;
}

void SearchRunner::run(std::function<bool()> isAwaited, std::function<void(Desk&)> work) {
    environment_.search();  // opened here, by the main thread
    queue_->async([this, isAwaited = std::move(isAwaited), work = std::move(work)] {
        if (!isAwaited()) return;
        try {
            work(*desk_);
        } catch (const std::exception& error) {
            environment_.log().warning(std::string("search: ") + error.what());
            const auto tell = [this, isAwaited, sentence = QString::fromUtf8(error.what())] {
                if (isAwaited()) emit failed(sentence);
            };
            QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
        }
    });
}

void SearchRunner::search(const QString& text, Typing typing, bool isExact) {
    using LastWord = QueryScanner::LastWord;
    const int question = ++asked_;
    const SearchEngine::Request request{
        .text = text.toStdString(),
        .limit = mostResults,
        .lastWord = typing == Typing::goesOn ? LastWord::mayGoOn : LastWord::asTyped,
        .effort = isExact ? SearchEngine::Effort::asTyped : SearchEngine::Effort::all};
    const auto isAwaited = [this, question] { return question == asked_; };
    run(isAwaited, [this, isAwaited, request, calendar = environment_.calendar()](Desk& desk) {
        const auto tell = [this, isAwaited, answer = desk.search(request, calendar)] {
            if (isAwaited()) emit answered(answer);
        };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
    });
}

void SearchRunner::forget() { ++asked_; }

void SearchRunner::suggest(const QString& typed) {
    const int question = ++suggestionsAsked_;
    const auto isAwaited = [this, question] { return question == suggestionsAsked_; };
    run(isAwaited, [this, isAwaited, typed](Desk& desk) {
        const auto tell = [this, isAwaited, typed, found = desk.suggest(typed.toStdString())] {
            if (isAwaited()) emit suggested(typed, found);
        };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
    });
}

}  // namespace tesserine::app
