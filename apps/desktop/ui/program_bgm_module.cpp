#include "ui/program_bgm_module.h"

#include "control/controller_operations.h"
#include "playout/bgm_panel_view.h"
#include "ui/audio_fader_widget.h"
#include "ui/style_property.h"
#include "ui/ui_text.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace tarnix {

namespace {

using Ops = ControllerOperations;
using ui::setStyleProperty;
using ui::text;

} // namespace

// The view the BGM controller drives; every call lands in the module.
class ProgramBgmView : public BgmPanelView
{
public:
    explicit ProgramBgmView(ProgramBgmModule::Impl *module) : m_module(module) {}

    void showBgmState(const QString &stateText, bool active, bool playing) override;
    void showBgmItem(const QString &line) override;
    void showBgmSignal(bool signal, bool clipped) override;
    qint64 bgmFadeDurationMs(bool fadeIn) const override;
    double bgmGain() const override;

private:
    ProgramBgmModule::Impl *m_module;
};

struct ProgramBgmModule::Impl {
    ProgramBgmModule *q = nullptr;
    QPointer<ControllerOperations> operations;
    std::unique_ptr<ProgramBgmView> view;
    QPointer<AudioFaderWidget> fader;
    bool active = false;
    bool playing = false;
    bool signal = false;
    bool clipped = false;

    QLabel *title = nullptr;
    QLabel *itemLabel = nullptr;
    QLabel *stateLabel = nullptr;
    QLabel *signalIndicator = nullptr;
    QPushButton *playButton = nullptr;
    QPushButton *pauseButton = nullptr;
    QPushButton *stopButton = nullptr;
    QPushButton *fadeInButton = nullptr;
    QPushButton *fadeOutButton = nullptr;
    QDoubleSpinBox *fadeInDuration = nullptr;
    QDoubleSpinBox *fadeOutDuration = nullptr;

    void build();
    QWidget *fadeModule(const char *name, int action, QPushButton **button, QDoubleSpinBox **duration);
    void refreshButtons();
    void refreshSignal();
    void invoke(int action)
    {
        if (operations)
            operations->invoke(Ops::Action(action));
    }
};

void ProgramBgmView::showBgmState(const QString &stateText, bool active, bool playing)
{
    ProgramBgmModule::Impl &m = *m_module;
    if (m.stateLabel->text() != stateText)
        m.stateLabel->setText(stateText);
    m.playing = playing;
    const bool changed = m.active != active;
    m.active = active;
    m.refreshButtons();
    if (changed)
        emit m.q->bgmActiveChanged(active);
}

void ProgramBgmView::showBgmItem(const QString &line)
{
    if (m_module->itemLabel->text() != line)
        m_module->itemLabel->setText(line);
}

void ProgramBgmView::showBgmSignal(bool signal, bool clipped)
{
    m_module->signal = signal;
    m_module->clipped = clipped;
    m_module->refreshSignal();
}

qint64 ProgramBgmView::bgmFadeDurationMs(bool fadeIn) const
{
    const QDoubleSpinBox *spin = fadeIn ? m_module->fadeInDuration : m_module->fadeOutDuration;
    return qint64(qRound(spin->value() * 1000.0));
}

double ProgramBgmView::bgmGain() const
{
    return m_module->fader ? m_module->fader->linearGain() : 1.0;
}

QWidget *ProgramBgmModule::Impl::fadeModule(const char *name, int action, QPushButton **button,
                                            QDoubleSpinBox **duration)
{
    const QString prefix = QString::fromLatin1(name);
    auto *control = new QFrame(q);
    control->setObjectName(prefix);
    auto *row = new QHBoxLayout(control);
    row->setContentsMargins(2, 2, 2, 2);
    *button = new QPushButton(control);
    (*button)->setObjectName(prefix + QStringLiteral("Button"));
    auto *durationControl = new QWidget(control);
    durationControl->setObjectName(prefix + QStringLiteral("DurationControl"));
    auto *durationRow = new QHBoxLayout(durationControl);
    durationRow->setContentsMargins(0, 0, 0, 0);
    *duration = new QDoubleSpinBox(durationControl);
    (*duration)->setObjectName(prefix + QStringLiteral("DurationSpinBox"));
    (*duration)->setRange(0.1, 60.0);
    (*duration)->setDecimals(1);
    (*duration)->setSingleStep(0.1);
    (*duration)->setValue(3.0);
    (*duration)->setSuffix(QStringLiteral(" s"));
    auto *increase = new QToolButton(durationControl);
    increase->setObjectName(prefix + QStringLiteral("DurationIncreaseButton"));
    increase->setText(QStringLiteral("+"));
    QObject::connect(increase, &QToolButton::clicked, *duration, [spin = *duration] { spin->stepUp(); });
    durationRow->addWidget(*duration, 1);
    durationRow->addWidget(increase);
    row->addWidget(*button);
    row->addWidget(durationControl);
    QObject::connect(*button, &QPushButton::clicked, q, [this, action] { invoke(action); });
    return control;
}

void ProgramBgmModule::Impl::build()
{
    auto *layout = new QVBoxLayout(q);
    auto *header = new QHBoxLayout;
    title = new QLabel(q);
    title->setObjectName(QStringLiteral("programControlModuleTitle"));
    stateLabel = new QLabel(q);
    stateLabel->setObjectName(QStringLiteral("programBgmStateLabel"));
    signalIndicator = new QLabel(q);
    signalIndicator->setObjectName(QStringLiteral("programBgmSignalIndicator"));
    signalIndicator->setFixedSize(12, 12);
    signalIndicator->setProperty("active", false);
    signalIndicator->setProperty("clipped", false);
    // Lit green with signal, red on a clip, whatever skin is in use; a skin
    // may draw it its own way.
    signalIndicator->setStyleSheet(
        QStringLiteral("#programBgmSignalIndicator { background: #2a2d30; border-radius: 6px; }"
                       "#programBgmSignalIndicator[active=\"true\"] { background: #16c733; }"
                       "#programBgmSignalIndicator[clipped=\"true\"] { background: #f01924; }"));
    header->addWidget(title);
    header->addWidget(signalIndicator);
    header->addStretch(1);
    header->addWidget(stateLabel);
    layout->addLayout(header);

    itemLabel = new QLabel(q);
    itemLabel->setObjectName(QStringLiteral("programBgmItemLabel"));
    layout->addWidget(itemLabel);

    auto *transport = new QHBoxLayout;
    auto button = [this](const char *name, int action) {
        auto *b = new QPushButton(q);
        b->setObjectName(QString::fromLatin1(name));
        QObject::connect(b, &QPushButton::clicked, q, [this, action] { invoke(action); });
        return b;
    };
    playButton = button("programBgmPlayButton", Ops::BgmPlay);
    pauseButton = button("programBgmPauseButton", Ops::BgmPause);
    stopButton = button("programBgmStopButton", Ops::BgmStop);
    transport->addWidget(playButton);
    transport->addWidget(pauseButton);
    transport->addWidget(stopButton);
    layout->addLayout(transport);

    auto *fades = new QHBoxLayout;
    fades->addWidget(fadeModule("programBgmFadeIn", Ops::BgmFadeInConfigured, &fadeInButton, &fadeInDuration));
    fades->addWidget(fadeModule("programBgmFadeOut", Ops::BgmFadeOutConfigured, &fadeOutButton, &fadeOutDuration));
    layout->addLayout(fades);
}

void ProgramBgmModule::Impl::refreshButtons()
{
    pauseButton->setEnabled(playing);
    stopButton->setEnabled(active);
    fadeInButton->setEnabled(playing);
    fadeOutButton->setEnabled(playing);
    setStyleProperty(playButton, "active", playing);
    setStyleProperty(pauseButton, "active", active && !playing);
}

void ProgramBgmModule::Impl::refreshSignal()
{
    setStyleProperty(signalIndicator, "active", signal);
    setStyleProperty(signalIndicator, "clipped", clipped);
    signalIndicator->setToolTip(clipped  ? text("program.bgm.signal_clipping", "BGM input is clipping")
                                : signal ? text("program.bgm.signal_detected", "BGM signal detected")
                                         : text("program.bgm.no_signal", "No BGM signal"));
}

ProgramBgmModule::ProgramBgmModule(ControllerOperations *operations, QWidget *parent)
    : QFrame(parent), d(std::make_unique<Impl>())
{
    setObjectName(QStringLiteral("programBgmControlModule"));
    setFrameShape(QFrame::StyledPanel);
    d->q = this;
    d->operations = operations;
    d->view = std::make_unique<ProgramBgmView>(d.get());
    d->build();
    retranslate();
    d->refreshButtons();
}

ProgramBgmModule::~ProgramBgmModule() = default;

BgmPanelView *ProgramBgmModule::view() const { return d->view.get(); }
bool ProgramBgmModule::isBgmActive() const { return d->active; }

void ProgramBgmModule::setFader(AudioFaderWidget *fader)
{
    d->fader = fader;
    if (fader)
        connect(fader, &QSlider::valueChanged, d->view.get(),
                [this] { emit d->view->bgmVolumeChanged(d->fader ? d->fader->linearGain() : 1.0); });
}

void ProgramBgmModule::retranslate()
{
    d->title->setText(text("program.bgm.title", "BGM"));
    d->playButton->setText(text("program.bgm.play", "BGM PLAY"));
    d->pauseButton->setText(text("program.bgm.pause", "BGM PAUSE"));
    d->stopButton->setText(text("program.bgm.stop", "BGM STOP"));
    d->fadeInButton->setText(text("program.bgm.fade_in", "BGM FADE IN"));
    d->fadeOutButton->setText(text("program.bgm.fade_out", "BGM FADE OUT"));
    for (QDoubleSpinBox *spin : {d->fadeInDuration, d->fadeOutDuration})
        spin->setToolTip(text("program.fade.duration_tooltip", "Fade duration in seconds"));
    emit d->view->textsExpired();
    if (d->stateLabel->text().isEmpty())
        d->stateLabel->setText(text("program.bgm.state.stopped", "STOPPED"));
    if (d->itemLabel->text().isEmpty())
        d->itemLabel->setText(text("program.bgm.no_item", "No BGM item"));
    d->refreshSignal();
}

} // namespace tarnix
