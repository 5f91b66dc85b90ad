#pragma once

#include "ui/program_panel.h"
#include "ui/steady_label.h"

#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/program_playout_panels.h"

#include <QPointer>
#include <QVariantAnimation>

class QAbstractButton;
class QButtonGroup;
class QDoubleSpinBox;
class QFrame;
class QLabel;
class QMenu;
class QPushButton;
class QSlider;
class QToolButton;
class QVBoxLayout;

namespace tarnix {

class ProgramDskButtons;

class AudioDelayControl;
class AudioFaderWidget;
class AudioMeterWidget;
class EqualizerEditor;
class MasterEqWindow;
class ProgramBgmModule;

// The panel as the ON AIR controller and the program audio controller see
// it; every call lands in the panel's Impl.
class ProgramPanelViewAdapter : public ProgramPanelView
{
    Q_OBJECT

public:
    explicit ProgramPanelViewAdapter(ProgramPanel::Impl *panel) : m_panel(panel) {}

    double itemGain() const override;
    double masterGain() const override;
    EqGains masterEq() const override;
    void showMute(bool explicitMute, bool effectiveMute) override;
    void showItemMeter(const MeterBallistics &meter) override;
    void showMasterMeter(const MeterBallistics &meter) override;
    void showBgmMeter(double leftDb, double rightDb, bool clipped) override;
    void showInputIndicator(bool signal, bool clip) override;
    void clearMeters() override;

    int itemDelayFrames() const override;
    EqGains itemEq() const override;
    bool isSeekDragging() const override;
    void showOnAirFile(const QString &name, const QString &path) override;
    void showItemAudio(int delayFrames, const EqGains &eq) override;
    void showTransport(bool hasItem, bool playing) override;
    void showTimes(qint64 positionMs, qint64 durationMs, qint64 remainingMs, bool live) override;
    void showInOut(qint64 inMs, qint64 outMs) override;
    void showRate(double rate, bool rateControl) override;
    void showRepeatCount(int count) override;
    void showVideoLevel(double level) override;
    void showFtb(bool lit) override;
    void showStatus(const QString &text) override;

private:
    ProgramPanel::Impl *m_panel;
};

// One manual fade: its button, its duration and the fader it moves.
struct ManualFadeModule {
    QFrame *control = nullptr;
    QPushButton *button = nullptr;
    QDoubleSpinBox *duration = nullptr;
    int target = 0;     // 1 the item fader, 2 the master fader
    bool fadeIn = true;
};

struct ProgramPanel::Impl {
    Impl(ProgramPanel *owner) : q(owner) {}

    ProgramPanel *q;
    QPointer<PlaylistModel> model;
    QPointer<ControllerOperations> operations;
    std::unique_ptr<ProgramPanelViewAdapter> view;

    // What the ON AIR controller told last.
    bool hasItem = false;
    bool playing = false;
    bool live = false;
    qint64 positionMs = -1;
    qint64 durationMs = -1;
    qint64 remainingMs = -1;
    qint64 inMs = -1;
    qint64 outMs = -1;
    double rate = 1.0;
    bool rateControl = false;
    int repeatCount = 0;
    bool seekDragging = false;
    bool totalMode = false;
    QString playPauseKeys;
    QString fileName;

    // Widgets, children of the panel.
    QVBoxLayout *monitorPlace = nullptr;
    QFrame *monitorFrame = nullptr;
    QLabel *sectionTitle = nullptr;
    QToolButton *backgroundButton = nullptr;
    QMenu *backgroundMenu = nullptr;
    QLabel *backgroundTitle = nullptr;
    QLabel *fileLabel = nullptr;
    QSlider *seekBar = nullptr;
    QPushButton *offAirButton = nullptr;
    QPushButton *pauseButton = nullptr;
    QPushButton *playButton = nullptr;
    QPushButton *ftbButton = nullptr;
    QPushButton *dskOnButton = nullptr;
    QPushButton *dskPlayButton = nullptr;
    QPushButton *dskPauseButton = nullptr;
    ProgramDskButtons *dskButtons = nullptr;
    QFrame *remainingModule = nullptr;
    QLabel *remainingTitle = nullptr;
    QPushButton *totalModeButton = nullptr;
    SteadyLabel *remainingTime = nullptr;
    QFrame *endModeModule = nullptr;
    QLabel *endModeTitle = nullptr;
    QLabel *endModeValue = nullptr;
    QFrame *rateModule = nullptr;
    QLabel *rateTitle = nullptr;
    QLabel *rateValue = nullptr;
    QList<QPushButton *> rateButtons;
    ProgramBgmModule *bgmModule = nullptr;
    // The operator wants the BGM controls; they stay while BGM runs.
    bool bgmControlsWanted = false;
    QFrame *documentModule = nullptr;
    QLabel *statusLabel = nullptr;
    QList<ManualFadeModule> fades;

    // Audio section.
    AudioFaderWidget *itemFader = nullptr;
    AudioFaderWidget *masterFader = nullptr;
    // The BGM strip, in the item strip's place while the toggle shows it.
    AudioFaderWidget *bgmFader = nullptr;
    AudioMeterWidget *bgmMeter = nullptr;
    QPushButton *faderToggle = nullptr;
    AudioMeterWidget *itemMeter = nullptr;
    AudioMeterWidget *masterMeter = nullptr;
    AudioDelayControl *itemDelay = nullptr;
    AudioDelayControl *masterDelay = nullptr;
    QPushButton *muteButton = nullptr;
    QPushButton *itemEqButton = nullptr;
    QPushButton *masterEqButton = nullptr;
    QPointer<QWidget> itemEqWindow;
    EqualizerEditor *itemEq = nullptr;
    QPointer<MasterEqWindow> masterEqWindow;
    ProgramAudioPanel::EqGains masterGains;
    bool settingItemAudio = false;

    // The one manual fade running, and the fader it moves.
    QVariantAnimation fadeAnimation;
    int fadeTarget = 0;
    QPushButton *fadeButton = nullptr;

    // program_panel.cpp
    void build();
    QWidget *buildActions();
    QWidget *buildModules();
    void buildBackgroundMenu();
    void refreshTransport();
    void refreshTimes();
    void refreshEndMode();
    void refreshRate();
    void retranslate();
    void retranslateAudio();
    ControllerOperations::Result invoke(int action, const QList<QVariant> &arguments = {});

    // program_panel_audio.cpp
    QWidget *buildAudio();
    QWidget *buildFades();
    void bindAudioOperations();
    AudioFaderWidget *fader(int target) const;
    bool setVolume(int target, int value);
    bool adjustVolume(int target, int delta);
    bool startFade(int moduleIndex);
    void openItemEq();
    void openMasterEq();
    void showBgmStrip(bool bgm);
    void refreshBgmControls();
};

} // namespace tarnix
