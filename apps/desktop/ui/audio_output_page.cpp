#include "ui/audio_output_page.h"

#include "audio/audio_output_coordinator.h"
#include "ui/ui_text.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnix {

namespace {

const QString kSystemDefault = QStringLiteral("@system-default");

// Puts the combo on the entry with this id, adding an unavailable entry for
// an id the list does not hold.
void choose(QComboBox *combo, const QString &id)
{
    for (int i = 0; i < combo->count(); ++i) {
        if (combo->itemData(i).toString().compare(id, Qt::CaseInsensitive) == 0) {
            combo->setCurrentIndex(i);
            return;
        }
    }
    combo->addItem(ui::text("settings.output.unavailable", "Unavailable \u2014 %1", {id}), id);
    combo->setCurrentIndex(combo->count() - 1);
}

} // namespace

AudioOutputPage::AudioOutputPage(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("audioOutputPage"));
    auto *layout = new QVBoxLayout(this);
    auto *grid = new QGridLayout;
    m_programLabel = new QLabel(this);
    m_program = new QComboBox(this);
    m_program->setObjectName(QStringLiteral("programOutputDeviceCombo"));
    m_pflLabel = new QLabel(this);
    m_pfl = new QComboBox(this);
    m_pfl->setObjectName(QStringLiteral("pflOutputDeviceCombo"));
    grid->addWidget(m_programLabel, 0, 0);
    grid->addWidget(m_program, 0, 1);
    grid->addWidget(m_pflLabel, 1, 0);
    grid->addWidget(m_pfl, 1, 1);
    grid->setColumnStretch(1, 1);
    layout->addLayout(grid);
    m_useDefault = new QCheckBox(this);
    m_useDefault->setObjectName(QStringLiteral("useDefaultWhenMissingCheckBox"));
    layout->addWidget(m_useDefault);
    m_sameDevice = new QLabel(this);
    m_sameDevice->setObjectName(QStringLiteral("audioOutputSameDeviceWarning"));
    m_sameDevice->setStyleSheet(QStringLiteral("color: #c0392b; font-weight: bold;"));
    layout->addWidget(m_sameDevice);
    m_current = new QLabel(this);
    m_current->setObjectName(QStringLiteral("currentProgramOutputLabel"));
    layout->addWidget(m_current);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("programOutputStatusLabel"));
    m_status->setWordWrap(true);
    layout->addWidget(m_status);
    m_message = new QLabel(this);
    m_message->setObjectName(QStringLiteral("audioOutputMessage"));
    m_message->setWordWrap(true);
    layout->addWidget(m_message);
    auto *buttons = new QHBoxLayout;
    m_refresh = new QPushButton(this);
    m_refresh->setObjectName(QStringLiteral("refreshAudioDevicesButton"));
    m_apply = new QPushButton(this);
    m_apply->setObjectName(QStringLiteral("applyAudioOutputsButton"));
    buttons->addWidget(m_refresh);
    buttons->addStretch(1);
    buttons->addWidget(m_apply);
    layout->addLayout(buttons);
    layout->addStretch(1);

    connect(m_program, &QComboBox::currentIndexChanged, this, [this] { refreshWarning(); });
    connect(m_pfl, &QComboBox::currentIndexChanged, this, [this] { refreshWarning(); });
    connect(m_refresh, &QPushButton::clicked, this, &AudioOutputPage::refreshRequested);
    connect(m_apply, &QPushButton::clicked, this,
            [this] { emit applyRequested(programChoice(), pflChoice(), useDefaultChoice()); });
    retranslate();
    fillCombos();
}

void AudioOutputPage::setDevices(const QList<AudioOutputDevice> &devices, const QString &defaultId)
{
    m_devices = devices;
    m_defaultId = defaultId;
    // What the operator picked and has not applied stays picked.
    m_savedProgram = programChoice();
    m_savedPfl = pflChoice();
    fillCombos();
}

void AudioOutputPage::setSaved(const QString &programId, const QString &pflId, bool useDefaultWhenMissing)
{
    m_savedProgram = programId;
    m_savedPfl = pflId;
    m_useDefault->setChecked(useDefaultWhenMissing);
    fillCombos();
}

void AudioOutputPage::setCurrentProgram(const QString &activeId, const QString &statusText)
{
    m_activeProgram = activeId;
    m_statusText = statusText;
    m_current->setText(ui::text("settings.output.current_program", "Current ON AIR output: %1",
                                {activeId.isEmpty() ? ui::text("settings.output.default", "System Default")
                                                    : deviceName(activeId)}));
    m_status->setText(statusText);
    refreshWarning();
}

void AudioOutputPage::setMessage(const QString &text) { m_message->setText(text); }

QString AudioOutputPage::programChoice() const
{
    return m_program->count() ? m_program->currentData().toString() : m_savedProgram;
}

QString AudioOutputPage::pflChoice() const { return m_pfl->count() ? m_pfl->currentData().toString() : m_savedPfl; }

bool AudioOutputPage::useDefaultChoice() const { return m_useDefault->isChecked(); }

QString AudioOutputPage::deviceName(const QString &id) const
{
    for (const AudioOutputDevice &device : m_devices)
        if (device.id.compare(id, Qt::CaseInsensitive) == 0)
            return device.name;
    return id;
}

void AudioOutputPage::fillCombos()
{
    const QSignalBlocker programBlocker(m_program);
    const QSignalBlocker pflBlocker(m_pfl);
    m_program->clear();
    m_program->addItem(ui::text("settings.output.default", "System Default"), QString());
    m_pfl->clear();
    m_pfl->addItem(ui::text("settings.output.none", "No Device"), QString());
    m_pfl->addItem(ui::text("settings.output.default", "System Default"), kSystemDefault);
    for (const AudioOutputDevice &device : std::as_const(m_devices)) {
        m_program->addItem(device.name, device.id);
        m_pfl->addItem(device.name, device.id);
    }
    choose(m_program, m_savedProgram);
    choose(m_pfl, m_savedPfl);
    refreshWarning();
}

void AudioOutputPage::refreshWarning()
{
    const bool same = AudioOutputCoordinator::sameDevice(programChoice(), pflChoice(), m_defaultId)
                      || (!m_activeProgram.isEmpty()
                          && AudioOutputCoordinator::sameDevice(m_activeProgram, pflChoice(), m_defaultId));
    m_sameDevice->setVisible(same);
}

void AudioOutputPage::retranslate()
{
    m_programLabel->setText(ui::text("settings.output.program_device", "ON AIR OUTPUT DEVICE"));
    m_pflLabel->setText(ui::text("settings.output.pfl_device", "PFL DEVICE"));
    m_useDefault->setText(ui::text("settings.output.fallback_default",
                                   "Use system default when the selected ON AIR audio device is not found (ON AIR only)"));
    m_sameDevice->setText(ui::text("settings.output.same_device", "ON AIR OUTPUT DEVICE and PFL DEVICE are the same."));
    m_refresh->setText(ui::text("settings.output.refresh", "Refresh"));
    m_apply->setText(ui::text("settings.output.apply", "Apply"));
    setCurrentProgram(m_activeProgram, m_statusText);
}

void AudioOutputPage::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
        fillCombos();
    }
    QWidget::changeEvent(event);
}

} // namespace tarnix
