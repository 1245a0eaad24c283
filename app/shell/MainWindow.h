#pragma once

#include "app/search/SearchRunner.h"
#include "app/shell/History.h"

#include <QMainWindow>

#include <memory>
#include <vector>

class QSplitter;
class QStackedWidget;
class QTabBar;
class QVBoxLayout;

namespace tesserine {
struct ObjectChange;
}  // namespace tesserine

namespace tesserine::app {

class AppEnvironment;
class Commands;
class NoteEditor;
class NotesPane;
class SearchField;
class SearchResults;
class Sidebar;
class TasksPage;
class TodayWindow;
struct OpenTabs;

/// The window: places at the left, what they hold at the right, in tabs.
///
/// What is being typed is saved before anything that leaves it; where that fails, the window stays
/// where it is.
class MainWindow final : public QMainWindow {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    static constexpr std::string_view geometryKey = "tesserine.window.geometry";
    static constexpr std::string_view panesKey = "tesserine.window.panes";
    static constexpr std::string_view listKey = "tesserine.window.list";
    static constexpr std::string_view sidebarKey = "tesserine.window.sidebar";
    static constexpr std::string_view tabsKey = "tesserine.window.tabs";

    /// Both outlive it.
    MainWindow(AppEnvironment& environment, Commands& commands);
    ~MainWindow() override;

    /// Goes there in the present tab. A place that is gone leaves the window where it is, and is
    /// told.
    void go(const Place& place);
    /// Gives the keys to what is listed.
    void focusContent();
    void goBack();
    void goForward();
    const Stop& current() const;

    void openTab(Place place);
    /// The last tab closes the window.
    void closeTab(int index);
    void closeCurrentTab();
    /// By so many tabs to the right, round the end.
    void turnTabs(int steps);

    /// Shows titles, marks and what is possible now.
    void settle();
    /// The notes that commands act on; none while tasks are shown.
    std::vector<Uuid> chosenNotes() const;
    /// A new note in the present place, or in All Notes.
    void newNote();
    void newTask(const QString& sentence = {});
    /// To the front, as when it is asked for from outside.
    void present();
    /// Saves what was typed; false when that failed, and the user was told.
    bool save();

    // Places for what other rooms show; the widget belongs to the window then, which does not
    // change whether it is visible.
    /// A line above everything at the right of the sidebar.
    void setNoticeLine(QWidget* line);
    /// A strip below the sidebar.
    void setStatusStrip(QWidget* strip);
    /// A panel at the right edge, beside whatever is shown.
    void setPanel(QWidget* panel);

    /// With what stands below it.
    void setSidebarVisible(bool isVisible);

    /// The small window of today; made when it is first asked for.
    TodayWindow& todayWindow();
    Sidebar& sidebar() { return *sidebar_; }
    NotesPane& notes() { return *notes_; }
    // Made when they are first asked for.
    TasksPage& tasks();
    SearchResults& searchResults();
    SearchField& searchField() { return *searchField_; }

signals:
    /// Pages that are not part of the window.
    void settingsWanted(const QString& area);
    void welcomeWanted();
    void importWanted(const QStringList& files);
    void closed();

private:
    void build();
    void connectParts();
    void connectEditor(NoteEditor& editor);
    void connectSearch();
    void makeSearchResults();
    void showResultMenu(const QPoint& where);
    void takeTaskDrops();
    bool enter(Stop stop);
    bool showInstead(QWidget& page);
    void returnTo(const Stop& stop);
    KeyHolder keyHolder() const;
    void followKeys();
    void giveKeys(KeyHolder keys);
    void giveKeysBack(KeyHolder keys);
    void showSearch(
        const QString& query, SearchRunner::Typing typing, const std::optional<Uuid>& note = {});
    void followTyping(const QString& text);
    void endTyping(const QString& text);
    bool showSavedSearch(const Uuid& id, const std::optional<Uuid>& note = {});
    bool notesShown() const;
    Stop stopFor(const Place& place) const;
    History& history();
    void showTab(int index);
    void nameTab(int tab, const QString& title);
    void followNote(const std::optional<Uuid>& note);
    bool wasRead(const Uuid& note) const;
    Place placeOfOpenNote() const;
    Place placeOfOpenTask() const;
    void followLibrary(const std::vector<ObjectChange>& changes);
    void restoreLayout();
    void restoreTabs();
    QString tabTitle(const Stop& stop) const;
    OpenTabs openTabs() const;
    void keepLayout();
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

    AppEnvironment& environment_;
    Commands& commands_;
    Sidebar* sidebar_;
    QTabBar* tabBar_;
    QSplitter* splitter_;
    QVBoxLayout* left_;   // the sidebar and what stands below it
    QVBoxLayout* right_;  // all else, from top to bottom
    QStackedWidget* content_;
    NotesPane* notes_;
    TasksPage* tasks_ = nullptr;
    SearchField* searchField_;
    SearchResults* searchResults_ = nullptr;
    std::unique_ptr<TodayWindow> todayWindow_;
    std::vector<History> tabs_;
    std::unique_ptr<const OpenTabs> tabsBefore_;  // as the window was closed last
    std::optional<Uuid> viewed_;                  // the note that was opened last, and when
    Instant viewedSince_{};
    bool isEntering_ = false;  // what is chosen now belongs to the place that is entered
    bool isTurning_ = false;   // the tab bar is told, not asked
};

}  // namespace tesserine::app
