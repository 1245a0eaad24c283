#pragma once

#include <QLineEdit>

#include <vector>

class QListWidget;

namespace tesserine {
struct SearchSuggestion;
}

namespace tesserine::app {

/// The field that a search is typed into, with suggestions below it.
///
/// Down and Up walk through the suggestions, Return or Tab takes one; without one Return ends the
/// typing. Escape closes the suggestions, then leaves the search.
class SearchField final : public QLineEdit {
    Q_OBJECT

public:
    explicit SearchField(QWidget* parent = nullptr);

    /// Shows what may be typed next, when it belongs to what stands in the field.
    void setSuggestions(
        const QString& typed, const std::vector<tesserine::SearchSuggestion>& suggestions);
    /// Puts a query into the field as if it had been typed and ended.
    void setQuery(const QString& query);

signals:
    /// Suggestions for what is typed so far are wanted.
    void suggestionsWanted(const QString& typed);
    /// The text has changed; more may be typed.
    void typed(const QString& text);
    /// Return was pressed, or a suggestion of a whole query taken.
    void searched(const QString& text);
    /// Escape: the search is to be left.
    void left();
    /// Down, with no suggestions open: to the results.
    void resultsWanted();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void follow(const QString& text);
    bool isOpen() const;
    void hideSuggestions();
    void walk(int steps);
    bool take();

    QListWidget* list_;
    std::vector<QString> replacements_;
};

}  // namespace tesserine::app
