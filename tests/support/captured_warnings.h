#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <mutex>

namespace tarnix::test {

// Collects warnings from any thread while it lives, and keeps them off the
// test output. Only one may exist at a time.
class CapturedWarnings
{
public:
    CapturedWarnings();
    ~CapturedWarnings();
    CapturedWarnings(const CapturedWarnings &) = delete;
    CapturedWarnings &operator=(const CapturedWarnings &) = delete;

    QStringList messages() const;
    // Whether any captured warning starts with the text.
    bool contains(const QString &prefix) const;

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &text);

    mutable std::mutex m_mutex;
    QStringList m_messages;
    QtMessageHandler m_previous = nullptr;
};

} // namespace tarnix::test
