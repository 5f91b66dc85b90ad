// The program panel's audio section: the item and master faders with their
// meters, delays and EQ, the master mute, and the manual fades that move a
// fader over a set time. The volume, fade, mute and EQ operations are bound
// here, so keys, MIDI and macros move the same faders the operator does.

#include "ui/program_panel.h"
#include "ui/program_panel_impl.h"

#include "shell/localized_text.h"
#include "ui/ui_text.h"
#include "ui/audio_delay_control.h"
#include "ui/audio_fader_law.h"
#include "ui/audio_fader_widget.h"
#include "ui/audio_meter_widget.h"
#include "ui/equalizer_editor.h"
#include "ui/master_eq_window.h"
#include "ui/program_bgm_module.h"

#include <QDoubleSpinBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace tarnix {

namespace {

using Ops = ControllerOperations;

constexpr int kItemTarget = 1;
constexpr int kMasterTarget = 2;
constexpr int kBgmTarget = 3;

using ui::text;

void setLit(QWidget *widget, bool lit)
{
    if (widget->property("lit").toBool() == lit)
        return;
    widget->setProperty("lit", lit);
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
}

} // namespace

// What the program audio controller reads and shows ------------------------

double ProgramPanelViewAdapter::itemGain() const { return m_panel->itemFader->linearGain(); }
double ProgramPanelViewAdapter::masterGain() const { return m_panel->masterFader->linearGain(); }
ProgramAudioPanel::EqGains ProgramPanelViewAdapter::masterEq() const { return m_panel->masterGains; }

void ProgramPanelViewAdapter::showMute(bool explicitMute, bool effectiveMute)
{
    m_panel->muteButton->setChecked(explicitMute);
    setLit(m_panel->muteButton, effectiveMute);
}

void ProgramPanelViewAdapter::showItemMeter(const MeterBallistics &meter) { m_panel->itemMeter->showMeter(meter); }
void ProgramPanelViewAdapter::showMasterMeter(const MeterBallistics &meter) { m_panel->masterMeter->showMeter(meter); }

void ProgramPanelViewAdapter::showBgmMeter(double leftDb, double rightDb, bool clipped)
{
    m_panel->bgmMeter->setLevels(leftDb, rightDb, clipped);
}

void ProgramPanelViewAdapter::showInputIndicator(bool, bool) {}

void ProgramPanelViewAdapter::clearMeters()
{
    m_panel->itemMeter->reset();
    m_panel->masterMeter->reset();
    m_panel->bgmMeter->reset();
}

// Building ------------------------------------------------------------------------

QWidget *ProgramPanel::Impl::buildAudio()
{
    auto *audio = new QFrame(q);
    audio->setObjectName(QStringLiteral("programAudioSection"));
    auto *grid = new QGridLayout(audio);
    grid->setContentsMargins(4, 0, 0, 0);
    grid->setHorizontalSpacing(4);

    itemFader = new AudioFaderWidget(AudioFaderWidget::Kind::Item, audio);
    itemFader->setObjectName(QStringLiteral("programItemFader"));
    masterFader = new AudioFaderWidget(AudioFaderWidget::Kind::Master, audio);
    masterFader->setObjectName(QStringLiteral("programMasterFader"));
    itemMeter = new AudioMeterWidget(audio);
    itemMeter->setObjectName(QStringLiteral("programItemMeter"));
    masterMeter = new AudioMeterWidget(audio);
    masterMeter->setObjectName(QStringLiteral("programMasterMeter"));
    itemDelay = new AudioDelayControl(audio);
    itemDelay->setObjectName(QStringLiteral("programItemDelay"));
    masterDelay = new AudioDelayControl(audio);
    masterDelay->setObjectName(QStringLiteral("programMasterDelay"));
    itemEqButton = new QPushButton(audio);
    itemEqButton->setObjectName(QStringLiteral("programItemEqButton"));
    masterEqButton = new QPushButton(audio);
    masterEqButton->setObjectName(QStringLiteral("programMasterEqButton"));
    muteButton = new QPushButton(audio);
    muteButton->setObjectName(QStringLiteral("programMasterMuteButton"));
    muteButton->setCheckable(true);

    auto *itemTitle = new QLabel(audio);
    itemTitle->setObjectName(QStringLiteral("programItemAudioTitle"));
    auto *masterTitle = new QLabel(audio);
    masterTitle->setObjectName(QStringLiteral("programMasterAudioTitle"));
    grid->addWidget(itemTitle, 0, 0, 1, 2, Qt::AlignHCenter);
    grid->addWidget(masterTitle, 0, 2, 1, 2, Qt::AlignHCenter);
    grid->addWidget(itemFader, 1, 0);
    grid->addWidget(itemMeter, 1, 1);
    grid->addWidget(masterFader, 1, 2);
    grid->addWidget(masterMeter, 1, 3);
    // The delays each on a row across both strips, so that the strips stay
    // as narrow as their faders and meters.
    auto *itemDelayTitle = new QLabel(audio);
    itemDelayTitle->setObjectName(QStringLiteral("programItemDelayTitle"));
    auto *masterDelayTitle = new QLabel(audio);
    masterDelayTitle->setObjectName(QStringLiteral("programMasterDelayTitle"));
    grid->addWidget(itemDelayTitle, 2, 0, 1, 4);
    grid->addWidget(itemDelay, 3, 0, 1, 4);
    grid->addWidget(masterDelayTitle, 4, 0, 1, 4);
    grid->addWidget(masterDelay, 5, 0, 1, 4);
    grid->addWidget(itemEqButton, 6, 0, 1, 2);
    grid->addWidget(masterEqButton, 6, 2, 1, 2);
    grid->addWidget(muteButton, 7, 0, 1, 4);
    grid->setRowStretch(1, 1);

    // The BGM strip takes the item strip's place while the toggle shows it;
    // the toggle stands with the BGM controls.
    bgmFader = new AudioFaderWidget(AudioFaderWidget::Kind::Item, audio);
    bgmFader->setObjectName(QStringLiteral("programBgmFader"));
    bgmMeter = new AudioMeterWidget(audio);
    bgmMeter->setObjectName(QStringLiteral("programBgmMeter"));
    grid->addWidget(bgmFader, 1, 0);
    grid->addWidget(bgmMeter, 1, 1);
    bgmFader->hide();
    bgmMeter->hide();
    faderToggle = new QPushButton(audio);
    faderToggle->setObjectName(QStringLiteral("programBgmFaderToggle"));
    faderToggle->setCheckable(true);
    faderToggle->hide();
    grid->addWidget(faderToggle, 8, 0, 1, 4);
    QObject::connect(faderToggle, &QPushButton::toggled, q, [this](bool bgm) { showBgmStrip(bgm); });
    bgmFader->setValueHandler([this](int value) { invoke(Ops::SetBgmVolume, {QVariant::fromValue(value)}); });
    bgmModule->setFader(bgmFader);

    // An operator's fader move is an operation like a key's or a MIDI
    // fader's, so it is logged and may be refused.
    itemFader->setValueHandler([this](int value) {
        invoke(Ops::SetItemVolume, {QVariant::fromValue(value)});
    });
    masterFader->setValueHandler([this](int value) {
        invoke(Ops::SetMasterVolume, {QVariant::fromValue(value)});
    });
    QObject::connect(itemFader, &QSlider::valueChanged, view.get(),
                     [this] { emit view->itemVolumeChanged(itemFader->linearGain()); });
    QObject::connect(masterFader, &QSlider::valueChanged, view.get(),
                     [this] { emit view->masterVolumeChanged(masterFader->linearGain()); });
    QObject::connect(itemDelay, &AudioDelayControl::framesChanged, view.get(),
                     [this](int frames) { emit view->itemDelayChanged(frames); });
    QObject::connect(masterDelay, &AudioDelayControl::framesChanged, view.get(),
                     [this](int frames) { emit view->masterDelayChanged(frames); });
    QObject::connect(muteButton, &QPushButton::clicked, q, [this](bool on) {
        // The button shows what is in force, not the click.
        muteButton->setChecked(!on);
        invoke(Ops::MasterMute, {QVariant::fromValue(on)});
    });
    QObject::connect(itemEqButton, &QPushButton::clicked, q, [this] { invoke(Ops::OpenItemEq); });
    QObject::connect(masterEqButton, &QPushButton::clicked, q, [this] { invoke(Ops::OpenMasterEq); });

    // The item EQ window: the ON AIR item's EQ for as long as it is on air.
    auto *window = new QWidget(q, Qt::Tool);
    window->setObjectName(QStringLiteral("itemEqWindow"));
    auto *windowLayout = new QVBoxLayout(window);
    itemEq = new EqualizerEditor(window);
    itemEq->setObjectName(QStringLiteral("itemEqualizerEditor"));
    windowLayout->addWidget(itemEq);
    itemEqWindow = window;
    QObject::connect(itemEq, &EqualizerEditor::gainsChanged, view.get(), [this](double low, double mid, double high) {
        emit view->itemEqChanged(low, mid, high);
    });
    return audio;
}

QWidget *ProgramPanel::Impl::buildFades()
{
    auto *row = new QWidget(q);
    // Two by two: item fades on the first row, master fades on the second.
    auto *layout = new QGridLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    struct FadeModuleKind {
        const char *prefix;
        int target;
        bool fadeIn;
        int action;
    };
    static const FadeModuleKind kFadeModules[] = {
        {"programItemFadeIn", kItemTarget, true, Ops::ItemFadeIn},
        {"programItemFadeOut", kItemTarget, false, Ops::ItemFadeOut},
        {"programMasterFadeIn", kMasterTarget, true, Ops::MasterFadeIn},
        {"programMasterFadeOut", kMasterTarget, false, Ops::MasterFadeOut},
    };
    for (const FadeModuleKind &kind : kFadeModules) {
        const QString prefix = QString::fromLatin1(kind.prefix);
        ManualFadeModule fade;
        fade.target = kind.target;
        fade.fadeIn = kind.fadeIn;
        fade.control = new QFrame(row);
        fade.control->setObjectName(prefix + QStringLiteral("Control"));
        // One row per module (button, length, +), two modules a row: the
        // four fit under the speed buttons without pushing the panel taller
        // than a laptop screen holds beside the EDIT panel.
        auto *column = new QHBoxLayout(fade.control);
        column->setContentsMargins(2, 2, 2, 2);
        fade.button = new QPushButton(fade.control);
        fade.button->setObjectName(prefix + QStringLiteral("Button"));
        auto *durationControl = new QWidget(fade.control);
        durationControl->setObjectName(prefix + QStringLiteral("DurationControl"));
        auto *durationRow = new QHBoxLayout(durationControl);
        durationRow->setContentsMargins(0, 0, 0, 0);
        fade.duration = new QDoubleSpinBox(durationControl);
        fade.duration->setObjectName(prefix + QStringLiteral("DurationSpinBox"));
        fade.duration->setRange(0.1, 60.0);
        fade.duration->setDecimals(1);
        fade.duration->setSingleStep(0.1);
        fade.duration->setValue(3.0);
        fade.duration->setSuffix(QStringLiteral(" s"));
        auto *increase = new QToolButton(durationControl);
        increase->setObjectName(prefix + QStringLiteral("DurationIncreaseButton"));
        increase->setText(QStringLiteral("+"));
        QObject::connect(increase, &QToolButton::clicked, fade.duration, [spin = fade.duration] { spin->stepUp(); });
        durationRow->addWidget(fade.duration, 1);
        durationRow->addWidget(increase);
        column->addWidget(fade.button);
        column->addWidget(durationControl);
        QObject::connect(fade.button, &QPushButton::clicked, q, [this, action = kind.action] { invoke(action); });
        layout->addWidget(fade.control, int(fades.size()) / 2, int(fades.size()) % 2);
        fades.append(fade);
    }

    fadeAnimation.setEasingCurve(QEasingCurve::Linear);
    fadeAnimation.setObjectName(QStringLiteral("programManualFadeAnimation"));
    QObject::connect(&fadeAnimation, &QVariantAnimation::valueChanged, q, [this](const QVariant &value) {
        if (AudioFaderWidget *target = fader(fadeTarget))
            target->setLinearGain(value.toDouble());
    });
    QObject::connect(&fadeAnimation, &QVariantAnimation::finished, q, [this] {
        if (fadeButton)
            setLit(fadeButton, false);
        fadeButton = nullptr;
        fadeTarget = 0;
    });
    return row;
}

AudioFaderWidget *ProgramPanel::Impl::fader(int target) const
{
    switch (target) {
    case kItemTarget:
        return itemFader;
    case kMasterTarget:
        return masterFader;
    case kBgmTarget:
        return bgmFader;
    default:
        return nullptr;
    }
}

void ProgramPanel::Impl::showBgmStrip(bool bgm)
{
    if (faderToggle->isChecked() != bgm) {
        faderToggle->setChecked(bgm); // comes back here through toggled
        return;
    }
    itemFader->setVisible(!bgm);
    itemMeter->setVisible(!bgm);
    bgmFader->setVisible(bgm);
    bgmMeter->setVisible(bgm);
    if (auto *title = q->findChild<QLabel *>(QStringLiteral("programItemAudioTitle")))
        title->setText(bgm ? text("program.audio.bgm", "BGM") : text("program.audio.item", "ITEM"));
    faderToggle->setText(bgm ? text("program.audio.item", "ITEM") : text("program.audio.bgm", "BGM"));
    faderToggle->setToolTip(bgm ? text("program.bgm.show_item_fader", "Show ITEM fader")
                                : text("program.bgm.show_fader", "Show BGM fader"));
}

bool ProgramPanel::Impl::setVolume(int target, int value)
{
    AudioFaderWidget *f = fader(target);
    if (!f)
        return false;
    // A hand on the fader ends a manual fade of it.
    if (fadeTarget == target)
        fadeAnimation.stop();
    f->setValue(std::clamp(value, kVolumeOffTenthsDb, kVolumeTopTenthsDb));
    return true;
}

bool ProgramPanel::Impl::adjustVolume(int target, int delta)
{
    AudioFaderWidget *f = fader(target);
    return f && setVolume(target, f->value() + delta);
}

// A fade runs from where the fader stands to 0 dB (in) or to silence (out)
// over the module's duration; a new fade replaces one that runs.
bool ProgramPanel::Impl::startFade(int moduleIndex)
{
    const ManualFadeModule &fade = fades.at(moduleIndex);
    AudioFaderWidget *f = fader(fade.target);
    if (!f)
        return false;
    fadeAnimation.stop();
    fadeTarget = fade.target;
    fadeButton = fade.button;
    setLit(fade.button, true);
    fadeAnimation.setStartValue(f->linearGain());
    fadeAnimation.setEndValue(fade.fadeIn ? 1.0 : 0.0);
    fadeAnimation.setDuration(int(qRound(fade.duration->value() * 1000.0)));
    fadeAnimation.start();
    return true;
}

void ProgramPanel::Impl::openItemEq()
{
    if (!itemEqWindow)
        return;
    itemEqWindow->show();
    itemEqWindow->raise();
}

void ProgramPanel::Impl::openMasterEq()
{
    if (!masterEqWindow) {
        masterEqWindow = new MasterEqWindow(q);
        masterEqWindow->setGains(masterGains.lowDb, masterGains.midDb, masterGains.highDb);
        QObject::connect(masterEqWindow, &MasterEqWindow::masterEqChanged, view.get(),
                         [this](double low, double mid, double high) {
                             masterGains = {low, mid, high};
                             const bool flat = low == 0.0 && mid == 0.0 && high == 0.0;
                             masterEqButton->setToolTip(flat ? text("program.eq.flat", "Master EQ: flat (all bands 0 dB)")
                                                             : text("program.eq.adjusted", "Master EQ: adjusted"));
                             setLit(masterEqButton, !flat);
                             emit view->masterEqChanged(low, mid, high);
                         });
    }
    masterEqWindow->show();
    masterEqWindow->raise();
}

void ProgramPanel::Impl::bindAudioOperations()
{
    ControllerOperations *ops = operations;
    if (!ops)
        return;
    ops->bind<bool>(Ops::MasterMute, q, [this](bool muted) {
        muteButton->setChecked(muted);
        emit view->masterMuteChanged(muted);
    });
    ops->bind<int>(Ops::SetItemVolume, q, [this](int value) { return setVolume(kItemTarget, value); });
    ops->bind<int>(Ops::SetMasterVolume, q, [this](int value) { return setVolume(kMasterTarget, value); });
    ops->bind<int>(Ops::AdjustItemVolume, q, [this](int delta) { return adjustVolume(kItemTarget, delta); });
    ops->bind<int>(Ops::AdjustMasterVolume, q, [this](int delta) { return adjustVolume(kMasterTarget, delta); });
    ops->bind<>(Ops::ResetItemVolume, q, [this] { return setVolume(kItemTarget, 0); });
    ops->bind<>(Ops::ResetMasterVolume, q, [this] { return setVolume(kMasterTarget, 0); });
    ops->bind<>(Ops::ItemFadeIn, q, [this] { return startFade(0); });
    ops->bind<>(Ops::ItemFadeOut, q, [this] { return startFade(1); });
    ops->bind<>(Ops::MasterFadeIn, q, [this] { return startFade(2); });
    ops->bind<>(Ops::MasterFadeOut, q, [this] { return startFade(3); });
    ops->bind<int>(Ops::SetBgmVolume, q, [this](int value) { return setVolume(kBgmTarget, value); });
    ops->bind<int>(Ops::AdjustBgmVolume, q, [this](int delta) { return adjustVolume(kBgmTarget, delta); });
    ops->bind<>(Ops::ResetBgmVolume, q, [this] { return setVolume(kBgmTarget, 0); });
    ops->bind<>(Ops::OpenItemEq, q, [this] { openItemEq(); });
    ops->bind<>(Ops::OpenMasterEq, q, [this] { openMasterEq(); });

    // Values outside the fader's range are refused, not clamped: a macro or
    // MIDI map that sends them is wrong and is told so by the log.
    auto inRange = [](int value) { return value >= kVolumeOffTenthsDb && value <= kVolumeTopTenthsDb; };
    ops->setGuard<int>(Ops::SetItemVolume, q, inRange);
    ops->setGuard<int>(Ops::SetMasterVolume, q, inRange);
    ops->setGuard<int>(Ops::SetBgmVolume, q, inRange);
    // The item fader and its fades act on an item on air only.
    auto itemOnAir = [this] { return model && model->onAirItemId() != 0; };
    ops->setGuard<>(Ops::ItemFadeIn, q, itemOnAir);
    ops->setGuard<>(Ops::ItemFadeOut, q, itemOnAir);
    ops->setGuard<>(Ops::OpenItemEq, q, itemOnAir);
}

void ProgramPanel::Impl::retranslateAudio()
{
    auto *itemTitle = q->findChild<QLabel *>(QStringLiteral("programItemAudioTitle"));
    auto *masterTitle = q->findChild<QLabel *>(QStringLiteral("programMasterAudioTitle"));
    const bool bgmStrip = faderToggle->isChecked();
    itemTitle->setText(bgmStrip ? text("program.audio.bgm", "BGM") : text("program.audio.item", "ITEM"));
    faderToggle->setText(bgmStrip ? text("program.audio.item", "ITEM") : text("program.audio.bgm", "BGM"));
    faderToggle->setToolTip(bgmStrip ? text("program.bgm.show_item_fader", "Show ITEM fader")
                                     : text("program.bgm.show_fader", "Show BGM fader"));
    masterTitle->setText(text("program.audio.master", "MASTER"));
    q->findChild<QLabel *>(QStringLiteral("programItemDelayTitle"))->setText(text("program.delay.item", "ITEM DELAY"));
    q->findChild<QLabel *>(QStringLiteral("programMasterDelayTitle"))
        ->setText(text("program.delay.master", "MASTER DELAY"));
    itemEqButton->setText(text("program.eq.item", "ITEM EQ"));
    masterEqButton->setText(text("program.eq.master", "MASTER EQ"));
    if (masterEqButton->toolTip().isEmpty())
        masterEqButton->setToolTip(text("program.eq.flat", "Master EQ: flat (all bands 0 dB)"));
    muteButton->setText(text("program.mute", "MUTE"));
    muteButton->setToolTip(text("program.mute.tooltip", "Mute the program output"));
    if (itemEqWindow)
        itemEqWindow->setWindowTitle(text("program.eq.item_window", "ON AIR item EQ"));
    static const char *const kFadeTexts[][2] = {
        {"program.fade.item_in", "ITEM FADE IN"},
        {"program.fade.item_out", "ITEM FADE OUT"},
        {"program.fade.master_in", "MASTER FADE IN"},
        {"program.fade.master_out", "MASTER FADE OUT"},
    };
    for (int i = 0; i < fades.size() && i < 4; ++i) {
        fades[i].button->setText(text(kFadeTexts[i][0], kFadeTexts[i][1]));
        fades[i].duration->setToolTip(text("program.fade.duration_tooltip", "Fade duration in seconds"));
    }
}

} // namespace tarnix
