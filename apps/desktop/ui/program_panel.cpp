#include "ui/program_panel.h"
#include "ui/program_panel_impl.h"

#include "shell/localized_text.h"
#include "ui/style_property.h"
#include "ui/ui_text.h"
#include "ui/audio_delay_control.h"
#include "ui/audio_fader_widget.h"
#include "ui/audio_meter_widget.h"
#include "ui/equalizer_editor.h"
#include "ui/master_eq_window.h"
#include "ui/playlist_item_texts.h"
#include "ui/program_bgm_module.h"
#include "ui/program_dsk_buttons.h"
#include "ui/remaining_time.h"

#include <QButtonGroup>
#include <QEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QSlider>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace tarnix {

namespace {

using Ops = ControllerOperations;

constexpr double kRates[] = {0.5, 0.75, 1.0, 1.25, 1.5, 2.0, 3.0};

using ui::setStyleProperty;
using ui::text;

QFrame *module(QWidget *parent, const char *objectName)
{
    auto *frame = new QFrame(parent);
    frame->setObjectName(QString::fromLatin1(objectName));
    frame->setFrameShape(QFrame::StyledPanel);
    return frame;
}

QLabel *moduleTitle(QWidget *parent)
{
    auto *title = new QLabel(parent);
    title->setObjectName(QStringLiteral("programControlModuleTitle"));
    return title;
}

void setTextIfChanged(QLabel *label, const QString &value)
{
    if (label->text() != value)
        label->setText(value);
}

QString rateText(double rate)
{
    return QStringLiteral("%1x").arg(rate, 0, 'f', 2);
}

} // namespace

// The view the ON AIR side drives -----------------------------------------------

int ProgramPanelViewAdapter::itemDelayFrames() const { return m_panel->itemDelay->frames(); }
bool ProgramPanelViewAdapter::isSeekDragging() const { return m_panel->seekDragging; }

ProgramPanelView::EqGains ProgramPanelViewAdapter::itemEq() const
{
    return {m_panel->itemEq->lowDb(), m_panel->itemEq->midDb(), m_panel->itemEq->highDb()};
}

void ProgramPanelViewAdapter::showOnAirFile(const QString &name, const QString &path)
{
    ProgramPanel::Impl &p = *m_panel;
    p.fileName = name;
    if (name.isEmpty() && path.isEmpty()) {
        setTextIfChanged(p.fileLabel, text("program.file.none", "No file selected"));
        p.fileLabel->setAccessibleName(text("program.file.none_accessible", "Current on-air file: none"));
        p.fileLabel->setToolTip(QString());
    } else {
        setTextIfChanged(p.fileLabel, name.isEmpty() ? path : name);
        p.fileLabel->setAccessibleName(text("program.file.current_accessible", "Current on-air file: %1", {name}));
        p.fileLabel->setToolTip(path);
    }
    p.refreshEndMode();
}

void ProgramPanelViewAdapter::showItemAudio(int delayFrames, const EqGains &eq)
{
    m_panel->itemDelay->setFrames(delayFrames);
    m_panel->itemEq->setGains(eq.lowDb, eq.midDb, eq.highDb);
}

void ProgramPanelViewAdapter::showTransport(bool hasItem, bool playing)
{
    if (m_panel->hasItem == hasItem && m_panel->playing == playing)
        return;
    m_panel->hasItem = hasItem;
    m_panel->playing = playing;
    m_panel->refreshTransport();
}

void ProgramPanelViewAdapter::showTimes(qint64 positionMs, qint64 durationMs, qint64 remainingMs, bool live)
{
    ProgramPanel::Impl &p = *m_panel;
    p.positionMs = positionMs;
    p.durationMs = durationMs;
    p.remainingMs = remainingMs;
    p.live = live;
    p.refreshTimes();
}

void ProgramPanelViewAdapter::showInOut(qint64 inMs, qint64 outMs)
{
    m_panel->inMs = inMs;
    m_panel->outMs = outMs;
}

void ProgramPanelViewAdapter::showRate(double rate, bool rateControl)
{
    m_panel->rate = rate;
    m_panel->rateControl = rateControl;
    m_panel->refreshRate();
    m_panel->refreshTimes();
}

void ProgramPanelViewAdapter::showRepeatCount(int count)
{
    m_panel->repeatCount = count;
    m_panel->refreshEndMode();
}

void ProgramPanelViewAdapter::showVideoLevel(double level)
{
    setStyleProperty(m_panel->monitorFrame, "videoLevel", qRound(std::clamp(level, 0.0, 1.0) * 10) / 10.0);
}

void ProgramPanelViewAdapter::showFtb(bool lit)
{
    m_panel->ftbButton->setChecked(lit);
    setStyleProperty(m_panel->ftbButton, "lit", lit);
}

void ProgramPanelViewAdapter::showStatus(const QString &status)
{
    setTextIfChanged(m_panel->statusLabel, status);
}

// Construction -------------------------------------------------------------------

ProgramPanel::ProgramPanel(PlaylistModel *model, ControllerOperations *operations, QWidget *parent)
    : QWidget(parent), d(std::make_unique<Impl>(this))
{
    setObjectName(QStringLiteral("programControlPanel"));
    d->model = model;
    d->operations = operations;
    d->view = std::make_unique<ProgramPanelViewAdapter>(d.get());
    d->build();
    d->bindAudioOperations();
    if (model) {
        // The end mode shown follows the item on air as it is edited.
        connect(model, &PlaylistModel::itemChanged, this, [impl = d.get()](quint64 id) {
            if (impl->model && id == impl->model->onAirItemId())
                impl->refreshEndMode();
        });
        connect(model, &PlaylistModel::onAirStateChanged, this, [impl = d.get()] { impl->refreshEndMode(); });
    }
    d->retranslate();
    d->view->showOnAirFile(QString(), QString());
    d->refreshTransport();
    d->refreshTimes();
    d->refreshRate();
}

ProgramPanel::~ProgramPanel()
{
    d->fadeAnimation.stop();
    delete d->itemEqWindow.data();
    delete d->masterEqWindow.data();
}

ProgramPanelView *ProgramPanel::view() const { return d->view.get(); }

void ProgramPanel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        d->retranslate();
}
bool ProgramPanel::remainingTotalMode() const { return d->totalMode; }

void ProgramPanel::setMonitor(QWidget *monitor)
{
    if (!monitor)
        return;
    monitor->setParent(d->monitorFrame);
    d->monitorPlace->addWidget(monitor);
    monitor->show();
}

void ProgramPanel::setPlaybackRateControlsShown(bool shown) { d->rateModule->setVisible(shown); }
bool ProgramPanel::setBgmControlsShown(bool shown)
{
    d->bgmControlsWanted = shown;
    d->refreshBgmControls();
    if (shown || !d->bgmModule->isBgmActive())
        return true;
    d->view->showStatus(text("program.bgm.controls_hidden_after_stop",
                             "The BGM controls will be hidden after BGM stops."));
    return false;
}

BgmPanelView *ProgramPanel::bgmView() const { return d->bgmModule->view(); }

DskPanelView *ProgramPanel::dskView() const { return d->dskButtons; }

// The BGM controls stand while wanted or while BGM runs; hidden, the fader
// strip goes back to the item.
void ProgramPanel::Impl::refreshBgmControls()
{
    const bool shown = bgmControlsWanted || bgmModule->isBgmActive();
    bgmModule->setVisible(shown);
    faderToggle->setVisible(shown);
    if (!shown)
        showBgmStrip(false);
}
void ProgramPanel::setFtbButtonDisabled(bool disabled) { d->ftbButton->setEnabled(!disabled); }

void ProgramPanel::setBackgroundColor(const QColor &colour)
{
    QPixmap swatch(14, 14);
    swatch.fill(colour.isValid() ? colour : QColor(Qt::black));
    d->backgroundButton->setIcon(QIcon(swatch));
    d->backgroundButton->setProperty("backgroundColor", colour.name());
}

void ProgramPanel::setRemainingTotalMode(bool total)
{
    if (d->totalMode == total)
        return;
    d->totalMode = total;
    d->totalModeButton->setChecked(total);
    d->refreshTimes();
    emit remainingTotalModeChanged(total);
}

void ProgramPanel::setPlayPauseKeys(const QString &keys)
{
    d->playPauseKeys = keys;
    d->retranslate();
}

ControllerOperations::Result ProgramPanel::Impl::invoke(int action, const QList<QVariant> &arguments)
{
    if (!operations)
        return {Ops::Unavailable};
    return operations->invoke(Ops::Action(action), arguments);
}

void ProgramPanel::Impl::build()
{
    auto *columns = new QHBoxLayout(q);
    columns->setContentsMargins(4, 4, 4, 4);
    columns->setSpacing(6);
    auto *left = new QVBoxLayout;
    left->setSpacing(4);

    auto *titleRow = new QHBoxLayout;
    sectionTitle = new QLabel(q);
    sectionTitle->setObjectName(QStringLiteral("programSectionTitle"));
    QFont titleFont = sectionTitle->font();
    titleFont.setBold(true);
    sectionTitle->setFont(titleFont);
    backgroundTitle = new QLabel(q);
    backgroundTitle->setObjectName(QStringLiteral("programBackgroundColorTitle"));
    backgroundButton = new QToolButton(q);
    backgroundButton->setObjectName(QStringLiteral("programBackgroundColorButton"));
    backgroundButton->setPopupMode(QToolButton::InstantPopup);
    buildBackgroundMenu();
    titleRow->addWidget(sectionTitle);
    titleRow->addStretch(1);
    titleRow->addWidget(backgroundTitle);
    titleRow->addWidget(backgroundButton);
    left->addLayout(titleRow);

    monitorFrame = new QFrame(q);
    monitorFrame->setObjectName(QStringLiteral("onAirMonitor"));
    monitorFrame->setMinimumSize(240, 135);
    monitorFrame->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    monitorFrame->setStyleSheet(QStringLiteral("#onAirMonitor { background: black; }"));
    monitorPlace = new QVBoxLayout(monitorFrame);
    monitorPlace->setContentsMargins(0, 0, 0, 0);
    left->addWidget(monitorFrame, 1);

    fileLabel = new QLabel(q);
    fileLabel->setObjectName(QStringLiteral("onAirFileLabel"));
    fileLabel->setTextInteractionFlags(Qt::NoTextInteraction);
    left->addWidget(fileLabel);

    seekBar = new QSlider(Qt::Horizontal, q);
    seekBar->setObjectName(QStringLiteral("programSeekBar"));
    seekBar->setRange(0, 0);
    QObject::connect(seekBar, &QSlider::sliderPressed, q, [this] { seekDragging = true; });
    QObject::connect(seekBar, &QSlider::sliderMoved, q, [this](int value) {
        invoke(Ops::ProgramSeek, {QVariant::fromValue(qint64(value))});
    });
    QObject::connect(seekBar, &QSlider::sliderReleased, q, [this] {
        seekDragging = false;
        invoke(Ops::ProgramSeek, {QVariant::fromValue(qint64(seekBar->value()))});
    });
    left->addWidget(seekBar);
    left->addWidget(buildActions());
    left->addWidget(buildModules());
    left->addWidget(buildFades());

    statusLabel = new QLabel(q);
    statusLabel->setObjectName(QStringLiteral("programStatusLabel"));
    statusLabel->setWordWrap(true);
    left->addWidget(statusLabel);

    columns->addLayout(left, 1);
    columns->addWidget(buildAudio());
}

QWidget *ProgramPanel::Impl::buildActions()
{
    auto *actions = new QFrame(q);
    actions->setObjectName(QStringLiteral("programActionPanel"));
    // Transport above the effects, so that both keep readable buttons on a
    // narrow screen.
    auto *row = new QVBoxLayout(actions);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);

    auto *transport = new QFrame(actions);
    transport->setObjectName(QStringLiteral("programTransportActionPanel"));
    auto *transportRow = new QHBoxLayout(transport);
    transportRow->setContentsMargins(0, 0, 0, 0);
    auto button = [](QWidget *parent, const char *name) {
        auto *b = new QPushButton(parent);
        b->setObjectName(QString::fromLatin1(name));
        b->setMinimumHeight(40);
        return b;
    };
    offAirButton = button(transport, "offAirButton");
    pauseButton = button(transport, "programPauseButton");
    playButton = button(transport, "programPlayButton");
    transportRow->addWidget(offAirButton);
    transportRow->addWidget(pauseButton);
    transportRow->addWidget(playButton);
    QObject::connect(offAirButton, &QPushButton::clicked, q, [this] { invoke(Ops::OffAir); });
    QObject::connect(pauseButton, &QPushButton::clicked, q, [this] { invoke(Ops::ProgramPause); });
    QObject::connect(playButton, &QPushButton::clicked, q, [this] { invoke(Ops::ProgramPlay); });

    auto *effects = new QFrame(actions);
    effects->setObjectName(QStringLiteral("programEffectsActionPanel"));
    auto *effectsRow = new QHBoxLayout(effects);
    effectsRow->setContentsMargins(0, 0, 0, 0);
    auto *ftbPanel = new QFrame(effects);
    ftbPanel->setObjectName(QStringLiteral("programFtbActionPanel"));
    auto *ftbRow = new QHBoxLayout(ftbPanel);
    ftbRow->setContentsMargins(0, 0, 0, 0);
    ftbButton = button(ftbPanel, "programFtbButton");
    ftbButton->setCheckable(true);
    ftbRow->addWidget(ftbButton);
    QObject::connect(ftbButton, &QPushButton::clicked, q, [this] {
        // The button shows what ON AIR says, not the click.
        ftbButton->setChecked(!ftbButton->isChecked());
        invoke(Ops::ToggleFtb);
    });
    // The DSK buttons follow what the DSK controller tells their view.
    dskOnButton = button(effects, "dskOnButton");
    dskPlayButton = button(effects, "dskPlayButton");
    dskPauseButton = button(effects, "dskPauseButton");
    dskButtons = new ProgramDskButtons(dskOnButton, dskPlayButton, dskPauseButton, q);
    QObject::connect(dskOnButton, &QPushButton::clicked, q, [this] { invoke(Ops::ToggleDsk); });
    QObject::connect(dskPlayButton, &QPushButton::clicked, q, [this] { invoke(Ops::DskPlay); });
    QObject::connect(dskPauseButton, &QPushButton::clicked, q, [this] { invoke(Ops::DskPause); });
    effectsRow->addWidget(ftbPanel);
    effectsRow->addWidget(dskOnButton);
    effectsRow->addWidget(dskPlayButton);
    effectsRow->addWidget(dskPauseButton);

    row->addWidget(transport);
    row->addWidget(effects);
    return actions;
}

QWidget *ProgramPanel::Impl::buildModules()
{
    auto *modules = new QWidget(q);
    auto *row = new QGridLayout(modules);
    row->setContentsMargins(0, 0, 0, 0);

    remainingModule = module(modules, "programRemainingModule");
    auto *remaining = new QVBoxLayout(remainingModule);
    auto *header = new QWidget(remainingModule);
    header->setObjectName(QStringLiteral("programRemainingHeader"));
    auto *headerRow = new QHBoxLayout(header);
    headerRow->setContentsMargins(0, 0, 0, 0);
    remainingTitle = moduleTitle(header);
    totalModeButton = new QPushButton(header);
    totalModeButton->setObjectName(QStringLiteral("programRemainingTotalModeButton"));
    totalModeButton->setCheckable(true);
    QObject::connect(totalModeButton, &QPushButton::toggled, q, [this](bool on) { q->setRemainingTotalMode(on); });
    headerRow->addWidget(remainingTitle);
    headerRow->addStretch(1);
    headerRow->addWidget(totalModeButton);
    remainingTime = new SteadyLabel(remainingModule);
    remainingTime->setObjectName(QStringLiteral("programRemainingTime"));
    remainingTime->setProperty("endingSoon", false);
    // Red in its last five seconds, whatever skin is in use; a skin may
    // colour it its own way.
    remainingTime->setStyleSheet(QStringLiteral("#programRemainingTime[endingSoon=\"true\"] { color: #ed555c; }"));
    QFont timeFont = remainingTime->font();
    timeFont.setPointSizeF(timeFont.pointSizeF() * 2.0);
    timeFont.setBold(true);
    timeFont.setStyleHint(QFont::Monospace);
    remainingTime->setFont(timeFont);
    remaining->addWidget(header);
    remaining->addWidget(remainingTime);

    endModeModule = module(modules, "programEndModeModule");
    auto *endMode = new QVBoxLayout(endModeModule);
    endModeTitle = moduleTitle(endModeModule);
    endModeValue = new QLabel(endModeModule);
    endModeValue->setObjectName(QStringLiteral("programEndModeValue"));
    endMode->addWidget(endModeTitle);
    endMode->addWidget(endModeValue);

    rateModule = module(modules, "programPlaybackRateModule");
    auto *rates = new QVBoxLayout(rateModule);
    auto *rateHeader = new QHBoxLayout;
    rateTitle = moduleTitle(rateModule);
    rateValue = new QLabel(rateModule);
    rateValue->setObjectName(QStringLiteral("playbackRate"));
    rateHeader->addWidget(rateTitle);
    rateHeader->addStretch(1);
    rateHeader->addWidget(rateValue);
    rates->addLayout(rateHeader);
    auto *rateButtonsRow = new QHBoxLayout;
    rateButtonsRow->setSpacing(2);
    for (double value : kRates) {
        auto *rateButton = new QPushButton(rateText(value).replace(QStringLiteral(".00"), QString()), rateModule);
        rateButton->setObjectName(QStringLiteral("playbackRateButton"));
        rateButton->setCheckable(true);
        rateButton->setProperty("playbackRate", value);
        rateButton->setMinimumWidth(36);
        QObject::connect(rateButton, &QPushButton::clicked, q, [this, value] {
            invoke(Ops::ProgramPlaybackRate, {QVariant::fromValue(value)});
            refreshRate();
        });
        rateButtonsRow->addWidget(rateButton);
        rateButtons.append(rateButton);
    }
    rates->addLayout(rateButtonsRow);

    // The BGM player's and the document pages' places; their owners fill them.
    bgmModule = new ProgramBgmModule(operations, modules);
    bgmModule->hide();
    QObject::connect(bgmModule, &ProgramBgmModule::bgmActiveChanged, q, [this] { refreshBgmControls(); });
    documentModule = module(modules, "programDocumentModule");
    documentModule->hide();

    // The remaining time and the end mode side by side; speed, BGM and
    // document pages each on a row of their own below.
    row->addWidget(remainingModule, 0, 0);
    row->addWidget(endModeModule, 0, 1);
    row->addWidget(rateModule, 1, 0, 1, 2);
    row->addWidget(bgmModule, 2, 0, 1, 2);
    row->addWidget(documentModule, 3, 0, 1, 2);
    row->setColumnStretch(0, 2);
    row->setColumnStretch(1, 1);
    return modules;
}

void ProgramPanel::Impl::buildBackgroundMenu()
{
    backgroundMenu = new QMenu(backgroundButton);
    backgroundMenu->setObjectName(QStringLiteral("programBackgroundColorMenu"));
    static const std::pair<const char *, const char *> kPresets[] = {
        {"#000000", "program.background.black"}, {"#ffffff", "program.background.white"},
        {"#808080", "program.background.grey"},  {"#00ff00", "program.background.green"},
        {"#0000ff", "program.background.blue"},
    };
    for (const auto &[colour, key] : kPresets) {
        QPixmap swatch(14, 14);
        swatch.fill(QColor(QLatin1String(colour)));
        QAction *action = backgroundMenu->addAction(QIcon(swatch), QString());
        action->setData(QString::fromLatin1(colour));
        action->setProperty("textKey", QString::fromLatin1(key));
        QObject::connect(action, &QAction::triggered, q, [this, colour] {
            const QColor chosen = QColor::fromString(QLatin1String(colour));
            q->setBackgroundColor(chosen);
            emit q->backgroundColorChosen(chosen);
        });
    }
    backgroundButton->setMenu(backgroundMenu);
}

// What stands in the panel ------------------------------------------------------

void ProgramPanel::Impl::refreshTransport()
{
    offAirButton->setEnabled(hasItem);
    playButton->setEnabled(hasItem && !playing);
    pauseButton->setEnabled(hasItem && playing);
    setStyleProperty(playButton, "active", hasItem && playing);
    setStyleProperty(pauseButton, "active", hasItem && !playing);
    seekBar->setEnabled(hasItem && !live && durationMs > 0);
}

void ProgramPanel::Impl::refreshTimes()
{
    if (!seekDragging) {
        const int maximum = int(std::clamp<qint64>(durationMs, 0, std::numeric_limits<int>::max()));
        if (seekBar->maximum() != maximum)
            seekBar->setRange(0, maximum);
        if (positionMs >= 0) {
            // A slider repaints on every new value; the handle moves only
            // when the value reaches another pixel of the bar.
            const int value = int(std::min<qint64>(positionMs, maximum));
            const int span = std::max(1, seekBar->width());
            if (QStyle::sliderPositionFromValue(0, maximum, value, span)
                    != QStyle::sliderPositionFromValue(0, maximum, seekBar->value(), span)
                || value == 0 || value == maximum)
                seekBar->setValue(value);
        }
    }
    seekBar->setEnabled(hasItem && !live && durationMs > 0);

    remaining_time::Input input;
    input.itemRemainingMs = hasItem ? remainingMs : -1;
    input.rate = rate;
    input.live = live;
    input.totalMode = totalMode;
    if (totalMode && model && model->onAirItemId()) {
        PlaylistRouteOptions route;
        route.startPositionMs = positionMs >= 0 ? std::optional<qint64>(positionMs) : std::nullopt;
        route.repeatProgress = repeatCount;
        route.playbackRate = rate;
        input.totalMs = model->route(model->onAirItemId(), route).totalMs;
    } else if (totalMode) {
        input.totalMs = 0;
    }
    const remaining_time::Shown shown = remaining_time::compute(input);
    QString value;
    if (shown.live)
        value = text("common.live", "LIVE");
    else if (shown.unknown)
        value = text("program.remaining.unknown", "UNLIMITED");
    else
        value = remaining_time::timeText(shown.ms.value_or(0));
    remainingTime->showText(value);
    const QString accessible = totalMode ? text("program.remaining.total_accessible", "ON AIR Total remaining time: %1", {value})
                                         : text("program.remaining.accessible", "ON AIR remaining time: %1", {value});
    if (remainingTime->accessibleName() != accessible)
        remainingTime->setAccessibleName(accessible);
    setStyleProperty(remainingTime, "endingSoon", shown.endingSoon);
}

void ProgramPanel::Impl::refreshEndMode()
{
    QString value = QStringLiteral("—");
    if (model) {
        if (const std::optional<PlaylistItem> item = model->item(model->onAirItemId()))
            value = playlist_view::endModeText(item->settings, repeatCount);
    }
    setTextIfChanged(endModeValue, value);
    endModeValue->setAccessibleName(text("program.end_mode.accessible", "ON AIR end mode: %1", {value}));
}

void ProgramPanel::Impl::refreshRate()
{
    setTextIfChanged(rateValue, rateText(rate));
    for (QPushButton *button : rateButtons) {
        button->setEnabled(rateControl);
        button->setChecked(qFuzzyCompare(button->property("playbackRate").toDouble(), rate));
    }
}

void ProgramPanel::Impl::retranslate()
{
    sectionTitle->setText(text("program.section.title", "ON AIR"));
    backgroundTitle->setText(text("program.background.title", "BG"));
    backgroundButton->setToolTip(text("program.background.tooltip", "Colour behind the program picture"));
    for (QAction *action : backgroundMenu->actions())
        action->setText(LocalizedText(action->property("textKey").toString(), {}, action->data().toString()).toString());
    offAirButton->setText(text("program.off_air", "OFF AIR"));
    pauseButton->setText(text("program.pause", "PAUSE"));
    playButton->setText(text("program.play", "PLAY"));
    if (playPauseKeys.isEmpty()) {
        playButton->setToolTip(text("program.play.tooltip", "Play the ON AIR item"));
        pauseButton->setToolTip(text("program.pause.tooltip", "Pause the ON AIR item"));
    } else {
        playButton->setToolTip(text("program.play.shortcut_tooltip", "Play ON AIR (%1: Play/Pause)", {playPauseKeys}));
        pauseButton->setToolTip(text("program.pause.shortcut_tooltip", "Pause ON AIR (%1: Play/Pause)", {playPauseKeys}));
    }
    ftbButton->setText(text("program.ftb", "FTB"));
    ftbButton->setToolTip(text("program.ftb.tooltip", "Fade the program to black, and back"));
    dskButtons->retranslate();
    remainingTitle->setText(text("program.remaining.title", "REMAIN TIMER"));
    totalModeButton->setText(text("program.remaining.total_mode", "Total"));
    QStringList remainingSamples{text("common.live", "LIVE"), text("program.remaining.unknown", "UNLIMITED")};
    for (char digit = '0'; digit <= '9'; ++digit)
        remainingSamples << remaining_time::timeText(0).replace(QLatin1Char('0'), QLatin1Char(digit));
    remainingTime->setSampleTexts(remainingSamples);
    totalModeButton->setToolTip(text("program.remaining.total_mode.tooltip",
                                     "Show the remaining time to the Map Total arrival point"));
    endModeTitle->setText(text("program.end_mode.title", "END MODE"));
    rateTitle->setText(text("program.playback_rate.title", "SPEED"));
    for (QPushButton *button : rateButtons)
        button->setAccessibleName(text("program.playback_rate.button.accessible", "Set ON AIR playback speed to %1x",
                                       {QString::number(button->property("playbackRate").toDouble())}));
    retranslateAudio();
    bgmModule->retranslate();
    view->showOnAirFile(hasItem ? fileName : QString(), hasItem ? fileLabel->toolTip() : QString());
    refreshTimes();
}

} // namespace tarnix
