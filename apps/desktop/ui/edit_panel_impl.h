#pragma once

#include "edit/edit_panel_view.h"
#include "ui/edit_panel.h"

#include <QList>

#include <array>

class QButtonGroup;
class QComboBox;
class QLabel;
class QPushButton;
class QStackedWidget;
class QToolButton;

namespace tarnix {

class AudioDelayControl;
class AudioFaderWidget;
class AudioMeterWidget;
class EditFadeControl;
class EditLivePreviewWidget;
class EditRepeatControl;
class EditTimeField;
class EqualizerEditor;
class RangeMarkerSlider;
class SteadyLabel;

// The panel as the EDIT session sees it; every call lands in the Impl.
class EditPanelViewAdapter : public EditPanelView
{
    Q_OBJECT

public:
    explicit EditPanelViewAdapter(EditPanel::Impl *panel) : m_panel(panel) {}

    void showMediaText(const QString &text) override;
    void setTransportEnabled(bool enabled) override;
    void showPosition(qint64 positionMs, qint64 durationMs) override;
    void showItem(const EditItemView &item) override;
    void showGotoEntries(const QList<EditGotoEntry> &entries) override;
    void showPlaying(bool playing) override;
    void showPfl(bool available, bool on) override;
    void showLevels(double inputLeftDb, double inputRightDb, double outputLeftDb, double outputRightDb) override;
    void showVideoFrame(const QImage &frame) override;
    void showLivePreview(bool live) override;
    void showStatus(const QString &text, bool error) override;

private:
    EditPanel::Impl *m_panel;
};

// The transport, in the order it stands: two rows of buttons.
struct EditTransportControls {
    QToolButton *goToStart = nullptr;
    QToolButton *goToIn = nullptr;
    QToolButton *rewind = nullptr;
    QToolButton *pause = nullptr;
    QToolButton *play = nullptr;
    QToolButton *fastForward = nullptr;
    QToolButton *goToOut = nullptr;
    QToolButton *goToEnd = nullptr;
    QToolButton *frameBack = nullptr;
    QToolButton *frameForward = nullptr;

    QList<QToolButton *> all() const
    {
        return {goToStart, goToIn, rewind, pause, play, fastForward, goToOut, goToEnd, frameBack, frameForward};
    }
};

// In and Out: the buttons that take the current position, the typed times
// and the words on whether a point is the default.
struct EditPointControls {
    QPushButton *setIn = nullptr;
    QPushButton *setOut = nullptr;
    EditTimeField *inField = nullptr;
    EditTimeField *outField = nullptr;
    QLabel *inState = nullptr;
    QLabel *outState = nullptr;
};

struct EditModeControls {
    QLabel *startTitle = nullptr;
    QButtonGroup *startGroup = nullptr;
    QPushButton *startPause = nullptr;
    QPushButton *startPlay = nullptr;
    QLabel *endTitle = nullptr;
    QButtonGroup *endGroup = nullptr;
    // Indexed by PlaylistEndMode: stop, pause, repeat, next, goto.
    std::array<QPushButton *, 5> endButtons{};
    QWidget *gotoRow = nullptr;
    QLabel *gotoTitle = nullptr;
    QComboBox *gotoTarget = nullptr;
    EditRepeatControl *repeat = nullptr;
};

struct EditAudioControls {
    QLabel *volumeTitle = nullptr;
    AudioFaderWidget *fader = nullptr;
    AudioMeterWidget *inputMeter = nullptr;
    AudioMeterWidget *outputMeter = nullptr;
    QLabel *inputTitle = nullptr;
    QLabel *outputTitle = nullptr;
    QLabel *delayTitle = nullptr;
    AudioDelayControl *delay = nullptr;
    QLabel *eqTitle = nullptr;
    EqualizerEditor *eq = nullptr;
    QPushButton *pfl = nullptr;
};

// What the session told last, so that texts and enable rules can be
// worked out again at any time.
struct EditPanelState {
    EditItemView item;
    QList<EditGotoEntry> gotoEntries;
    QString mediaText;
    QString statusText;
    bool statusError = false;
    bool transportEnabled = true;
    bool playing = false;
    bool pflAvailable = false;
    bool pflOn = false;
    bool live = false;
    qint64 positionMs = -1;
    qint64 durationMs = -1;
};

struct EditPanel::Impl {
    explicit Impl(EditPanel *owner) : q(owner) {}

    EditPanel *q;
    std::unique_ptr<EditPanelViewAdapter> view;
    EditPanelState state;

    QLabel *sectionTitle = nullptr;
    QLabel *mediaLabel = nullptr;
    QStackedWidget *monitor = nullptr;
    EditVideoSurface *surface = nullptr;
    EditLivePreviewWidget *livePreview = nullptr;
    RangeMarkerSlider *timeline = nullptr;
    SteadyLabel *positionLabel = nullptr;
    QLabel *statusLabel = nullptr;
    EditTransportControls transport;
    EditPointControls points;
    EditModeControls modes;
    std::array<EditFadeControl *, 3> fades{};  // fade in, fade out, crossfade
    EditAudioControls audio;

    // edit_panel_layout.cpp
    void build();
    QWidget *buildTransport();
    QWidget *buildPoints();
    QWidget *buildModes();
    QWidget *buildFades();
    QWidget *buildAudio();

    // edit_panel_settings.cpp
    void showSettings();
    void showOutPoint();
    void rebuildGotoList();
    void selectGotoTarget();
    void refreshEnabled();
    void refreshModeRows();

    // edit_panel_texts.cpp
    // The keys of the EDIT commands, by shortcut name, for the tooltips.
    QHash<QString, QString> shortcutKeys;
    QString withKeys(const QString &tip, const char *command) const;
    void retranslate();
    void refreshPointTexts();
    void refreshPfl();
    void refreshStatus();
    void refreshMediaText();
    void refreshPosition();
};

} // namespace tarnix
