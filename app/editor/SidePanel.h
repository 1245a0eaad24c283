#pragma once

#include "base/Uuid.h"

#include <QTimer>
#include <QWidget>

#include <functional>

class QButtonGroup;
class QStackedWidget;

namespace tesserine::app {

class AppEnvironment;
class BodyEdit;
class Commands;
class OpenNote;
class PanelList;
class Pictures;

/// The pane beside a note: its outline, the notes that link to it, its files, its versions. Only
/// the part that is seen is kept up to date.
class SidePanel final : public QWidget {
    Q_OBJECT

public:
    enum class Part { outline, backlinks, attachments, versions };
    struct Parts {
        AppEnvironment& environment;
        OpenNote& open;
        BodyEdit& body;
        Pictures& pictures;
        std::function<bool()> save;
        /// Saves what was done to the note here, and shows it as one step that can be undone. False
        /// when it could not be saved.
        std::function<bool()> saveStep;
    };

    SidePanel(Commands& commands, Parts parts, QWidget* parent);

    void open(Part part);
    /// The note changed or is another one: shows it, soon.
    void refresh();
    /// Leaves the note room in this width of both, in pixels.
    void fit(int width);

signals:
    void noteChosen(const tesserine::Uuid& id);
    void attachmentChosen(const tesserine::Uuid& id);

private:
    void layOut();
    void toggle(Part part, bool isOn);
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void fill();
    void fillOutline();
    void fillBacklinks();
    void fillAttachments();
    void fillVersions();
    void jump(int position);
    void showVersion(const Uuid& id);
    void showAttachmentMenu(const QPoint& point);
    void saveAttachment(const Uuid& id);
    void askToDeleteAttachment(const Uuid& id);
    void deleteAttachment(const Uuid& id);
    void tellCommands();
    Part part() const;

    Commands& commands_;
    Parts parts_;
    QButtonGroup* const tabs_;
    QStackedWidget* const stack_;
    PanelList* const outline_;
    PanelList* const backlinks_;
    PanelList* const attachments_;
    PanelList* const versions_;
    QTimer timer_;
};

}  // namespace tesserine::app
