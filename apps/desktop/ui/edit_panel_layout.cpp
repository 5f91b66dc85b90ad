// The EDIT panel's widget tree, and what each control sends. Everything the
// operator does becomes a request signal of the view; the controls show
// what they were told, and a refused request is answered by the session
// showing the stored settings again.

#include "ui/edit_panel.h"
#include "ui/edit_panel_impl.h"

#include "shell/interface_scale.h"
#include "ui/audio_delay_control.h"
#include "ui/audio_fader_widget.h"
#include "ui/audio_meter_widget.h"
#include "ui/edit_fade_control.h"
#include "ui/edit_live_preview_widget.h"
#include "ui/edit_repeat_control.h"
#include "ui/edit_time_field.h"
#include "ui/equalizer_editor.h"
#include "ui/range_marker_slider.h"
#include "ui/steady_label.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace tarnix {

namespace {

QLabel *label(QWidget *parent, const char *objectName)
{
    auto *l = new QLabel(parent);
    l->setObjectName(QString::fromLatin1(objectName));
    return l;
}

QLabel *moduleTitle(QWidget *parent, const char *objectName)
{
    QLabel *title = label(parent, objectName);
    QFont font = title->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 0.85);
    title->setFont(font);
    return title;
}

QToolButton *transportButton(QWidget *parent, const char *objectName, QStyle::StandardPixmap icon)
{
    auto *button = new QToolButton(parent);
    button->setObjectName(QString::fromLatin1(objectName));
    if (icon != QStyle::SP_CustomBase)
        button->setIcon(parent->style()->standardIcon(icon));
    button->setMinimumSize(scaledPixels(24), scaledPixels(28));
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return button;
}

QPushButton *modeButton(QWidget *parent, const char *objectName, QButtonGroup *group, int id)
{
    auto *button = new QPushButton(parent);
    button->setObjectName(QString::fromLatin1(objectName));
    button->setCheckable(true);
    button->setMinimumHeight(scaledPixels(26));
    button->setMinimumWidth(scaledPixels(40));
    group->addButton(button, id);
    return button;
}

} // namespace

void EditPanel::Impl::build()
{
    auto *columns = new QHBoxLayout(q);
    columns->setContentsMargins(scaledPixels(4), scaledPixels(4), scaledPixels(4), scaledPixels(4));
    columns->setSpacing(scaledPixels(8));
    auto *left = new QVBoxLayout;
    left->setSpacing(scaledPixels(4));

    auto *titleRow = new QHBoxLayout;
    sectionTitle = label(q, "editSectionTitle");
    QFont titleFont = sectionTitle->font();
    titleFont.setBold(true);
    sectionTitle->setFont(titleFont);
    mediaLabel = label(q, "editMediaLabel");
    // A long file name is cut, not allowed to widen the column.
    mediaLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    positionLabel = new SteadyLabel(q);
    positionLabel->setObjectName(QStringLiteral("editPositionLabel"));
    positionLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    titleRow->addWidget(sectionTitle);
    titleRow->addWidget(mediaLabel, 1);
    titleRow->addWidget(positionLabel);
    left->addLayout(titleRow);

    // The monitor beside the transport and the points, so that the panel
    // keeps its height on a small screen; the block takes the spare height.
    auto *top = new QHBoxLayout;
    top->setSpacing(scaledPixels(4));
    monitor = new QStackedWidget(q);
    monitor->setObjectName(QStringLiteral("editMonitor"));
    monitor->setMinimumSize(scaledPixels(144), scaledPixels(81));
    monitor->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    surface = new EditVideoSurface(monitor);
    livePreview = new EditLivePreviewWidget(monitor);
    monitor->addWidget(surface);
    monitor->addWidget(livePreview);
    monitor->setCurrentWidget(surface);
    auto *controls = new QVBoxLayout;
    controls->setSpacing(scaledPixels(4));
    controls->addWidget(buildTransport());
    controls->addWidget(buildPoints());
    controls->addStretch(1);
    top->addWidget(monitor, 3);
    top->addLayout(controls, 2);
    left->addLayout(top, 1);

    timeline = new RangeMarkerSlider(q);
    timeline->setObjectName(QStringLiteral("editTimeline"));
    QObject::connect(timeline, &RangeMarkerSlider::seekRequested, view.get(),
                     [this](qint64 positionMs) { emit view->seekRequested(positionMs); });
    left->addWidget(timeline);
    left->addWidget(buildModes());
    left->addWidget(buildFades());

    statusLabel = label(q, "editStatusLabel");
    statusLabel->setWordWrap(true);
    statusLabel->setProperty("error", false);
    // Red for an error whatever the skin; a skin may colour it its own way.
    statusLabel->setStyleSheet(QStringLiteral("#editStatusLabel[error=\"true\"] { color: #ed555c; }"));
    statusLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    left->addWidget(statusLabel);

    columns->addLayout(left, 1);
    columns->addWidget(buildAudio());
}

QWidget *EditPanel::Impl::buildTransport()
{
    auto *panel = new QWidget(q);
    panel->setObjectName(QStringLiteral("editTransportPanel"));
    auto *rows = new QVBoxLayout(panel);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(scaledPixels(3));
    auto *first = new QHBoxLayout;
    first->setSpacing(scaledPixels(2));
    auto *second = new QHBoxLayout;
    second->setSpacing(scaledPixels(2));

    EditTransportControls &t = transport;
    t.goToStart = transportButton(panel, "editGoToStartButton", QStyle::SP_MediaSkipBackward);
    t.goToIn = transportButton(panel, "editGoToInButton", QStyle::SP_CustomBase);
    t.rewind = transportButton(panel, "editRewindButton", QStyle::SP_MediaSeekBackward);
    t.pause = transportButton(panel, "editPauseButton", QStyle::SP_MediaPause);
    t.play = transportButton(panel, "editPlayButton", QStyle::SP_MediaPlay);
    t.fastForward = transportButton(panel, "editFastForwardButton", QStyle::SP_MediaSeekForward);
    t.goToOut = transportButton(panel, "editGoToOutButton", QStyle::SP_CustomBase);
    t.goToEnd = transportButton(panel, "editGoToEndButton", QStyle::SP_MediaSkipForward);
    t.frameBack = transportButton(panel, "editFrameBackButton", QStyle::SP_CustomBase);
    t.frameForward = transportButton(panel, "editFrameForwardButton", QStyle::SP_CustomBase);
    // Texts that need no translation: the points and the frame counts.
    t.goToIn->setText(QStringLiteral("\u21e4IN"));
    t.goToOut->setText(QStringLiteral("OUT\u21e5"));
    t.frameBack->setText(QStringLiteral("\u25c2 \u22121F"));
    t.frameForward->setText(QStringLiteral("+1F \u25b8"));
    // The point buttons keep their words whole however narrow the row.
    for (QToolButton *button : {t.goToIn, t.goToOut})
        button->setMinimumWidth(button->sizeHint().width());
    for (QToolButton *button : {t.goToStart, t.goToIn, t.rewind, t.pause, t.play, t.fastForward, t.goToOut, t.goToEnd})
        first->addWidget(button);
    // Play and pause show what the player does, not the press.
    t.play->setCheckable(true);
    t.pause->setCheckable(true);
    // Holding steps on: each repeat is one more frame.
    t.frameBack->setAutoRepeat(true);
    t.frameForward->setAutoRepeat(true);

    EditPanelViewAdapter *v = view.get();
    QObject::connect(t.goToStart, &QToolButton::clicked, v, [v] { emit v->jumpToStartRequested(); });
    QObject::connect(t.goToIn, &QToolButton::clicked, v, [v] { emit v->jumpToInRequested(); });
    QObject::connect(t.goToOut, &QToolButton::clicked, v, [v] { emit v->jumpToOutRequested(); });
    QObject::connect(t.goToEnd, &QToolButton::clicked, v, [v] { emit v->jumpToEndRequested(); });
    // Rewind and fast-forward run while held.
    QObject::connect(t.rewind, &QToolButton::pressed, v, [v] { emit v->scanBackwardRequested(); });
    QObject::connect(t.rewind, &QToolButton::released, v, [v] { emit v->scanStopRequested(); });
    QObject::connect(t.fastForward, &QToolButton::pressed, v, [v] { emit v->scanForwardRequested(); });
    QObject::connect(t.fastForward, &QToolButton::released, v, [v] { emit v->scanStopRequested(); });
    QObject::connect(t.play, &QToolButton::clicked, v, [this, v] {
        transport.play->setChecked(state.playing);
        emit v->playRequested();
    });
    QObject::connect(t.pause, &QToolButton::clicked, v, [this, v] {
        transport.pause->setChecked(!state.playing && state.item.itemId != 0);
        emit v->pauseRequested();
    });
    QObject::connect(t.frameBack, &QToolButton::clicked, v, [v] { emit v->frameStepRequested(-1); });
    QObject::connect(t.frameForward, &QToolButton::clicked, v, [v] { emit v->frameStepRequested(1); });

    second->addWidget(t.frameBack);
    second->addWidget(t.frameForward);
    second->addStretch(1);
    rows->addLayout(first);
    rows->addLayout(second);
    return panel;
}

QWidget *EditPanel::Impl::buildPoints()
{
    auto *panel = new QWidget(q);
    panel->setObjectName(QStringLiteral("editPointsPanel"));
    auto *grid = new QGridLayout(panel);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(scaledPixels(4));
    grid->setVerticalSpacing(scaledPixels(3));

    EditPointControls &p = points;
    p.setIn = new QPushButton(panel);
    p.setIn->setObjectName(QStringLiteral("editSetInButton"));
    p.setOut = new QPushButton(panel);
    p.setOut->setObjectName(QStringLiteral("editSetOutButton"));
    p.inField = new EditTimeField(panel);
    p.inField->setObjectName(QStringLiteral("editInTimeField"));
    p.outField = new EditTimeField(panel);
    p.outField->setObjectName(QStringLiteral("editOutTimeField"));
    p.inState = label(panel, "editInPointStateLabel");
    p.outState = label(panel, "editOutPointStateLabel");
    const int fieldWidth = p.inField->fontMetrics().horizontalAdvance(QStringLiteral("0000:00:00.00")) + scaledPixels(12);
    for (EditTimeField *field : {p.inField, p.outField})
        field->setFixedWidth(fieldWidth);
    for (QLabel *state : {p.inState, p.outState}) {
        state->setWordWrap(true);
        QFont small = state->font();
        small.setPointSizeF(small.pointSizeF() * 0.85);
        state->setFont(small);
        state->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }
    for (QPushButton *button : {p.setIn, p.setOut})
        button->setMinimumHeight(scaledPixels(26));

    grid->addWidget(p.setIn, 0, 0);
    grid->addWidget(p.inField, 0, 1);
    grid->addWidget(p.inState, 0, 2);
    grid->addWidget(p.setOut, 1, 0);
    grid->addWidget(p.outField, 1, 1);
    grid->addWidget(p.outState, 1, 2);
    grid->setColumnStretch(2, 1);

    EditPanelViewAdapter *v = view.get();
    QObject::connect(p.setIn, &QPushButton::clicked, v, [v] { emit v->setInRequested(); });
    QObject::connect(p.setOut, &QPushButton::clicked, v, [v] { emit v->setOutRequested(); });
    QObject::connect(p.inField, &EditTimeField::timeEntered, v, [v](qint64 ms) { emit v->inPointTimeRequested(ms); });
    QObject::connect(p.outField, &EditTimeField::timeEntered, v, [v](qint64 ms) { emit v->outPointTimeRequested(ms); });
    return panel;
}

QWidget *EditPanel::Impl::buildModes()
{
    auto *panel = new QWidget(q);
    panel->setObjectName(QStringLiteral("editModesPanel"));
    auto *rows = new QVBoxLayout(panel);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(scaledPixels(3));

    EditModeControls &m = modes;
    // Each mode's title above its buttons keeps the row narrow.
    auto *modeRow = new QGridLayout;
    modeRow->setHorizontalSpacing(scaledPixels(2));
    modeRow->setVerticalSpacing(scaledPixels(1));
    m.startTitle = moduleTitle(panel, "editStartModeTitle");
    m.startGroup = new QButtonGroup(panel);
    m.startPause = modeButton(panel, "editStartModePauseButton", m.startGroup, int(PlaylistStartMode::pause));
    m.startPlay = modeButton(panel, "editStartModePlayButton", m.startGroup, int(PlaylistStartMode::play));
    m.endTitle = moduleTitle(panel, "editEndModeTitle");
    m.endGroup = new QButtonGroup(panel);
    static const char *const kEndNames[] = {"editEndModeStopButton", "editEndModePauseButton", "editEndModeRepeatButton",
                                            "editEndModeNextButton", "editEndModeGotoButton"};
    for (int i = 0; i < int(m.endButtons.size()); ++i)
        m.endButtons[i] = modeButton(panel, kEndNames[i], m.endGroup, i);
    modeRow->addWidget(m.startTitle, 0, 0, 1, 2);
    modeRow->addWidget(m.startPause, 1, 0);
    modeRow->addWidget(m.startPlay, 1, 1);
    modeRow->setColumnMinimumWidth(2, scaledPixels(10));
    modeRow->addWidget(m.endTitle, 0, 3, 1, 5);
    for (int i = 0; i < int(m.endButtons.size()); ++i)
        modeRow->addWidget(m.endButtons[i], 1, 3 + i);
    modeRow->setColumnStretch(8, 1);

    // The GOTO destination and the repeat options share the row under the
    // modes; each shows only with its end mode.
    auto *optionRow = new QHBoxLayout;
    optionRow->setSpacing(scaledPixels(6));
    m.gotoRow = new QWidget(panel);
    m.gotoRow->setObjectName(QStringLiteral("editGotoRow"));
    auto *gotoLayout = new QHBoxLayout(m.gotoRow);
    gotoLayout->setContentsMargins(0, 0, 0, 0);
    m.gotoTitle = moduleTitle(m.gotoRow, "editGotoTitle");
    m.gotoTarget = new QComboBox(m.gotoRow);
    m.gotoTarget->setObjectName(QStringLiteral("editGotoTargetCombo"));
    m.gotoTarget->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m.gotoTarget->setMinimumContentsLength(16);
    gotoLayout->addWidget(m.gotoTitle);
    gotoLayout->addWidget(m.gotoTarget, 1);
    m.repeat = new EditRepeatControl(panel);
    m.repeat->setObjectName(QStringLiteral("editRepeatControl"));
    optionRow->addWidget(m.repeat);
    optionRow->addWidget(m.gotoRow, 1);
    m.gotoRow->hide();
    m.repeat->hide();

    rows->addLayout(modeRow);
    rows->addLayout(optionRow);

    EditPanelViewAdapter *v = view.get();
    QObject::connect(m.startGroup, &QButtonGroup::idClicked, v,
                     [v](int id) { emit v->startModeRequested(PlaylistStartMode(id)); });
    QObject::connect(m.endGroup, &QButtonGroup::idClicked, v,
                     [v](int id) { emit v->endModeRequested(PlaylistEndMode(id)); });
    // activated: only the operator's choice, never a shown value.
    QObject::connect(m.gotoTarget, &QComboBox::activated, v, [this, v](int index) {
        const quint64 itemId = modes.gotoTarget->itemData(index).toULongLong();
        if (itemId != 0)
            emit v->gotoTargetRequested(itemId);
    });
    QObject::connect(m.repeat, &EditRepeatControl::optionsRequested, v,
                     [v](qint32 count, PlaylistRepeatEndMode endMode) { emit v->repeatOptionsRequested(count, endMode); });
    return panel;
}

QWidget *EditPanel::Impl::buildFades()
{
    auto *panel = new QWidget(q);
    panel->setObjectName(QStringLiteral("editFadesPanel"));
    auto *row = new QHBoxLayout(panel);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(scaledPixels(12));
    static const char *const kNames[] = {"editFadeInControl", "editFadeOutControl", "editCrossfadeControl"};
    for (int i = 0; i < int(fades.size()); ++i) {
        fades[i] = new EditFadeControl(panel);
        fades[i]->setObjectName(QString::fromLatin1(kNames[i]));
        row->addWidget(fades[i]);
    }
    row->addStretch(1);

    EditPanelViewAdapter *v = view.get();
    QObject::connect(fades[0], &EditFadeControl::fadeRequested, v,
                     [v](bool enabled, qint64 ms) { emit v->fadeInRequested(enabled, ms); });
    QObject::connect(fades[1], &EditFadeControl::fadeRequested, v,
                     [v](bool enabled, qint64 ms) { emit v->fadeOutRequested(enabled, ms); });
    QObject::connect(fades[2], &EditFadeControl::fadeRequested, v,
                     [v](bool enabled, qint64 ms) { emit v->endCrossfadeRequested(enabled, ms); });
    return panel;
}

QWidget *EditPanel::Impl::buildAudio()
{
    auto *panel = new QFrame(q);
    panel->setObjectName(QStringLiteral("editAudioSection"));
    auto *columns = new QHBoxLayout(panel);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(scaledPixels(8));

    EditAudioControls &a = audio;
    a.volumeTitle = moduleTitle(panel, "editNominalVolumeTitle");
    a.fader = new AudioFaderWidget(AudioFaderWidget::Kind::Nominal, panel);
    a.fader->setObjectName(QStringLiteral("editNominalVolumeFader"));
    a.fader->setCompact(true);
    a.inputMeter = new AudioMeterWidget(panel);
    a.inputMeter->setObjectName(QStringLiteral("editInputMeter"));
    a.outputMeter = new AudioMeterWidget(panel);
    a.outputMeter->setObjectName(QStringLiteral("editOutputMeter"));
    for (AudioMeterWidget *meter : {a.inputMeter, a.outputMeter}) {
        meter->setCompact(true);
        meter->setShortScale(true);
    }
    a.inputTitle = label(panel, "editInputMeterTitle");
    a.outputTitle = label(panel, "editOutputMeterTitle");
    a.delayTitle = moduleTitle(panel, "editDelayTitle");
    a.delay = new AudioDelayControl(panel);
    a.delay->setObjectName(QStringLiteral("editNominalDelay"));
    a.eqTitle = moduleTitle(panel, "editNominalEqTitle");
    a.eq = new EqualizerEditor(panel);
    a.eq->setObjectName(QStringLiteral("editNominalEq"));
    a.pfl = new QPushButton(panel);
    a.pfl->setObjectName(QStringLiteral("editPflButton"));
    a.pfl->setCheckable(true);
    a.pfl->setMinimumHeight(scaledPixels(28));

    // The fader and its two meters side by side, the meter titles under them.
    auto *strip = new QGridLayout;
    strip->setHorizontalSpacing(scaledPixels(3));
    strip->setVerticalSpacing(0);
    strip->addWidget(a.fader, 0, 0, 2, 1);
    strip->addWidget(a.inputMeter, 0, 1);
    strip->addWidget(a.outputMeter, 0, 2);
    strip->addWidget(a.inputTitle, 1, 1, Qt::AlignHCenter);
    strip->addWidget(a.outputTitle, 1, 2, Qt::AlignHCenter);
    for (QLabel *title : {a.inputTitle, a.outputTitle}) {
        QFont small = title->font();
        small.setPointSizeF(small.pointSizeF() * 0.75);
        title->setFont(small);
    }

    // The fader strip takes the column's whole height; delay, EQ and PFL
    // stand beside it.
    auto *stripColumn = new QVBoxLayout;
    stripColumn->setSpacing(scaledPixels(2));
    stripColumn->addWidget(a.volumeTitle);
    stripColumn->addLayout(strip, 1);
    auto *settings = new QVBoxLayout;
    settings->setSpacing(scaledPixels(3));
    settings->addWidget(a.delayTitle);
    settings->addWidget(a.delay);
    settings->addSpacing(scaledPixels(4));
    settings->addWidget(a.eqTitle);
    settings->addWidget(a.eq);
    settings->addStretch(1);
    settings->addWidget(a.pfl);
    columns->addLayout(stripColumn);
    columns->addLayout(settings);

    EditPanelViewAdapter *v = view.get();
    // The fader shows the value the operator asks for; a refusal comes
    // back as the stored value.
    a.fader->setValueHandler([this, v](int value) {
        audio.fader->setValue(value);
        emit v->nominalVolumeRequested(value);
    });
    QObject::connect(a.delay, &AudioDelayControl::framesChanged, v,
                     [v](int frames) { emit v->nominalDelayRequested(frames); });
    QObject::connect(a.eq, &EqualizerEditor::gainsChanged, v, [v](double low, double mid, double high) {
        emit v->nominalEqRequested(qRound(low * 10.0), qRound(mid * 10.0), qRound(high * 10.0));
    });
    QObject::connect(a.pfl, &QPushButton::clicked, v, [this, v] {
        // The button shows what PFL does, not the press.
        audio.pfl->setChecked(state.pflOn);
        emit v->pflRequested(!state.pflOn);
    });
    return panel;
}

} // namespace tarnix
