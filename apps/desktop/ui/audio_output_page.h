#pragma once

#include "audio/audio_output_device_monitor.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace tarnix {

// The choice of the two sound devices: ON AIR's and PFL's, from the list
// the device monitor found, and whether ON AIR falls back to the system
// default when its device is gone. It only shows and asks: the head saves
// and applies what the operator chose. The settings window embeds it.
class AudioOutputPage : public QWidget
{
    Q_OBJECT

public:
    explicit AudioOutputPage(QWidget *parent = nullptr);

    void setDevices(const QList<AudioOutputDevice> &devices, const QString &defaultId);
    // The saved choices; a saved device missing from the list is offered as
    // unavailable so that it is not lost by opening the page.
    void setSaved(const QString &programId, const QString &pflId, bool useDefaultWhenMissing);
    // The device ON AIR really plays to, and where applying it stands.
    void setCurrentProgram(const QString &activeId, const QString &statusText);
    void setMessage(const QString &text);

    QString programChoice() const;
    QString pflChoice() const;
    bool useDefaultChoice() const;

signals:
    void applyRequested(const QString &programId, const QString &pflId, bool useDefaultWhenMissing);
    void refreshRequested();

protected:
    void changeEvent(QEvent *event) override;

private:
    void fillCombos();
    void refreshWarning();
    void retranslate();
    QString deviceName(const QString &id) const;

    QList<AudioOutputDevice> m_devices;
    QString m_defaultId;
    QString m_savedProgram;
    QString m_savedPfl;
    QString m_activeProgram;
    QString m_statusText;

    QLabel *m_programLabel = nullptr;
    QComboBox *m_program = nullptr;
    QLabel *m_pflLabel = nullptr;
    QComboBox *m_pfl = nullptr;
    QCheckBox *m_useDefault = nullptr;
    QLabel *m_sameDevice = nullptr;
    QLabel *m_current = nullptr;
    QLabel *m_status = nullptr;
    QLabel *m_message = nullptr;
    QPushButton *m_refresh = nullptr;
    QPushButton *m_apply = nullptr;
};

} // namespace tarnix
