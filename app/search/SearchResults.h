#pragma once

#include "app/search/ResultDelegate.h"
#include "app/search/SearchRunner.h"
#include "base/Uuid.h"

#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <optional>
#include <utility>

class QLabel;
class QListView;
class QStackedLayout;

namespace tesserine::app {

class EmptyState;
class IconButton;
class ResultsModel;

/// What a search found: how it was understood, what was changed about it, the results.
class SearchResults final : public QWidget {
    Q_OBJECT

public:
    explicit SearchResults(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Searches; an empty query shows what can be searched for.
    void search(const QString& text, SearchRunner::Typing typing, bool isExact = false);
    const QString& query() const { return query_; }
    /// What was found in the chosen result, as it is written there: of a query that was corrected,
    /// or found other forms of its words, these stand in the note and not what was typed.
    QStringList foundWords() const;
    /// Where nothing is shown beside them; choosing any of them says so again.
    void chooseNone();
    /// The note that is read beside them: its line is chosen once it is found, and no other.
    void chooseWhenFound(const Uuid& note);
    /// The same, and says that it is chosen: what is searched for now stands in other places of it.
    void chooseAnewWhenFound(const Uuid& note);
    /// Gives the keys to the list, where the toolkit would choose and so open its first line.
    void takeKeys();
    /// Asks for a name to keep the query under, as a saved search.
    void keep();
    /// What lines say of tasks.
    void setTaskDetails(TaskDetails details) { delegate_->setTaskDetails(std::move(details)); }
    SearchRunner& runner() { return *runner_; }
    /// Follows the library: lines come and go, the chosen one stays chosen.
    QListView& list() { return *list_; }

signals:
    void noteChosen(const tesserine::Uuid& note);
    /// A task is chosen now, and no note any more.
    void taskChosen();
    /// Return or a double click on a result.
    void noteOpened(const tesserine::Uuid& note);
    void taskOpened(const tesserine::Uuid& task);
    /// The query is to be replaced by another one.
    void queryWanted(const QString& query);

private:
    void build();
    void show(const SearchAnswer& answer);
    void showLinks(const SearchAnswer& answer);
    void keepAs(const QString& name, const QString& query);
    void add(const QString& name, const QString& query);
    void refresh();
    void goOn(const Uuid& found, int line);
    void showEmpty(const SearchAnswer& answer);
    void follow(const QString& link);
    void choose(const QModelIndex& index);
    void open(const QModelIndex& index);

    AppEnvironment& environment_;
    SearchRunner* runner_;
    ResultsModel* model_;
    QLabel* explanation_;
    QLabel* changes_;
    QLabel* hints_;
    IconButton* keep_;
    QListView* list_;
    ResultDelegate* delegate_;
    EmptyState* empty_;
    QStackedLayout* stack_ = nullptr;
    QString query_;
    QString withoutDropped_;  // the query without what hides results
    SearchRunner::Typing typing_ = SearchRunner::Typing::finished;
    bool isExact_ = false;
    QString shown_;             // the query that the lines answer
    std::optional<Uuid> read_;  // to be chosen by the next answer
    bool isReadAnew_ = false;   // which says so
    bool isMarking_ = false;
    QTimer refreshTimer_;
};

}  // namespace tesserine::app
