#pragma once

#include <QColor>
#include <QFont>
#include <QObject>

class QApplication;
class QPalette;

namespace tesserine::app {

/// Distances, in device-independent pixels. Everything in the window stands on this scale.
namespace space {
inline constexpr int hair = 2;
inline constexpr int tiny = 4;
inline constexpr int small = 8;
inline constexpr int medium = 12;
inline constexpr int large = 16;
inline constexpr int huge = 24;
inline constexpr int vast = 40;
}  // namespace space

/// Radius of rounded corners, in device-independent pixels.
inline constexpr int cornerRadius = 6;

/// What a text is for; `Theme::font` tells how it looks.
enum class TextRole {
    caption,  ///< dates, counts, hints
    body,
    emphasis,  ///< body, semibold: titles in lists
    heading,   ///< of a group or a pane
    title,     ///< of a note, of an empty state
    display,   ///< of a welcome
};

/// The colours of the window by what they are for. Text on its usual ground has a contrast of at
/// least 4.5 in both schemes.
struct Colors {
    bool isDark = false;
    QColor window;   ///< the ground of panes that stand back, such as the sidebar
    QColor surface;  ///< the ground of lists and of the editor
    QColor raised;   ///< of fields, cards, pop-overs
    QColor text;
    QColor secondaryText;
    QColor line;       ///< thin lines between panes and rows
    QColor hover;      ///< ground under the pointer
    QColor selection;  ///< ground of what is selected; text stays `text`
    QColor accent;     ///< what can be pressed, focus
    QColor onAccent;
    QColor danger;
    QColor warning;
    QColor success;
    QColor highlight;    ///< behind marked words
    QColor code;         ///< ground of code
    QColor priority[4];  ///< of tasks, most urgent first; the last is that of none
};

/// How the window looks: follows the desktop's light or dark scheme and its font.
///
/// One per program, made before the first widget. Belongs to the main thread.
class Theme final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Theme)

public:
    enum class Scheme { system, light, dark };

    /// Takes over the application's palette, font and style.
    explicit Theme(QApplication& application);
    ~Theme() override;

    /// The theme of the program; light colours and the usual font before one was made.
    static const Colors& colors();
    static QFont font(TextRole role);

    /// As long as it lives, colours are the light ones: for what is drawn on paper.
    class OnPaper {
    public:
        OnPaper();
        OnPaper(const OnPaper&) = delete;
        OnPaper& operator=(const OnPaper&) = delete;
        ~OnPaper();

    private:
        Colors screen_;
    };

    Scheme scheme() const { return scheme_; }
    void setScheme(Scheme scheme);
    /// What `Scheme::system` stands for, when the desktop tells. Until it does, or when it tells
    /// `system`, the palette of the platform decides.
    void setDesktopScheme(Scheme scheme);
    Scheme desktopScheme() const { return desktopScheme_; }

signals:
    /// The colours changed; widgets that keep colours or tinted icons make them anew.
    void changed();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void apply();
    bool isDark() const;

    QApplication& application_;
    Scheme scheme_ = Scheme::system;
    Scheme desktopScheme_ = Scheme::system;
    bool isApplying_ = false;
};

}  // namespace tesserine::app
