#pragma once

#include "shell/localized_text.h"

#include <QList>
#include <QMetaType>
#include <QObject>
#include <QString>

#include <chrono>
#include <optional>

class QTimer;

namespace tarnix {

enum class UserInfoSeverity { None = 0, Success = 1, Warning = 2, Error = 3 };

// "none", "success", "warning", "error".
QString userInfoSeverityText(UserInfoSeverity severity);

struct UserInfoMessage {
    UserInfoSeverity severity = UserInfoSeverity::None;
    QString source;                 // "SYSTEM", "PLAYLIST", "PROGRAM", "EDIT", "UVC" or free text
    LocalizedText text;             // resolved when shown
    QString detail;
    bool offerAudioSettings = false;
    bool awaitingAnswer = false;    // a question: no time-out, never pre-empted

    friend bool operator==(const UserInfoMessage &, const UserInfoMessage &) = default;
};

// The one queue of messages for the operator: exactly one is shown at a
// time, the others wait by severity. Nothing here opens a dialog, so it is
// safe during a live show. Main thread only; other threads post through
// queued calls.
class UserInfoCenter : public QObject
{
    Q_OBJECT

public:
    explicit UserInfoCenter(QObject *parent = nullptr,
                            std::chrono::milliseconds timeout = std::chrono::milliseconds(5000));

    // Logs the message at once, then shows it, queues it or drops it as a
    // duplicate of the shown or a waiting one.
    void post(UserInfoSeverity severity, const QString &source, const LocalizedText &text,
              const QString &detail = {}, bool offerAudioSettings = false);

    // The question whether EDIT monitoring may share the ON AIR device; the
    // answer comes back through answerPflSameDevice().
    void askPflSameDevice();
    void answerPflSameDevice(bool yes);

    void dismiss();
    void showNext();

    // The message shown, if any.
    std::optional<UserInfoMessage> current() const;
    QList<UserInfoMessage> waiting() const { return m_waiting; }
    bool timerActive() const;
    // Warnings and errors shown to the operator since this center was made
    // (questions excluded). A message pre-empted while it waited was never
    // shown and is not counted.
    quint64 warningsShown() const { return m_warningsShown; }

    // The name a source is shown by: the catalogue's name for the known
    // sources, the text itself for others.
    static QString sourceDisplayName(const QString &source);

signals:
    void messageChanged(tarnix::UserInfoSeverity severity, const QString &source,
                        const tarnix::LocalizedText &text, const QString &detail);
    void pflSameDeviceAnswered(bool yes);
    void audioSettingsRequested();

private:
    void show(const UserInfoMessage &message);
    void post(UserInfoMessage message);

    std::optional<UserInfoMessage> m_current;
    QList<UserInfoMessage> m_waiting;
    QTimer *m_timer = nullptr;
    int m_timeoutMs = 5000;
    quint64 m_warningsShown = 0;
};

} // namespace tarnix

Q_DECLARE_METATYPE(tarnix::UserInfoSeverity)
