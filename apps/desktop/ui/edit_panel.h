#pragma once

#include <QHash>
#include <QString>
#include <QWidget>

#include <memory>

namespace tarnix {

class EditPanelView;
class EditVideoSurface;

// The operator's face of the EDIT session: the monitor, the timeline, the
// transport, In and Out, start and end modes, fades, the item's nominal
// volume, delay and EQ with their meters, PFL, and a status line. It keeps
// no truth of its own: the EDIT session drives it through `view()`, and
// every press becomes a request signal of that view. After a refused
// change the session shows the stored settings again, and the panel
// follows. Main thread.
class EditPanel : public QWidget
{
    Q_OBJECT

public:
    explicit EditPanel(QWidget *parent = nullptr);
    ~EditPanel() override;

    // What the EDIT session reads and drives.
    EditPanelView *view() const;

    // The keys bound to the EDIT commands, by shortcut name ("EditSetIn",
    // "EditEndStop", "TogglePfl", ...), named in the tooltips.
    void setShortcutHints(const QHash<QString, QString> &keysByName);

    // The monitor surface ("edit-video-surface") of file items.
    EditVideoSurface *videoSurface() const;

public:
    struct Impl;

protected:
    void changeEvent(QEvent *event) override;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
