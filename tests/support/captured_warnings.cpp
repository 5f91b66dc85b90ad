#include "support/captured_warnings.h"

#include <atomic>

namespace tarnix::test {
namespace {

std::atomic<CapturedWarnings *> g_active{nullptr};

} // namespace

CapturedWarnings::CapturedWarnings()
{
    g_active.store(this);
    m_previous = qInstallMessageHandler(&CapturedWarnings::handler);
}

CapturedWarnings::~CapturedWarnings()
{
    qInstallMessageHandler(m_previous);
    g_active.store(nullptr);
}

QStringList CapturedWarnings::messages() const
{
    std::lock_guard lock(m_mutex);
    return m_messages;
}

bool CapturedWarnings::contains(const QString &prefix) const
{
    std::lock_guard lock(m_mutex);
    for (const QString &message : m_messages) {
        if (message.startsWith(prefix))
            return true;
    }
    return false;
}

void CapturedWarnings::handler(QtMsgType type, const QMessageLogContext &context,
                               const QString &text)
{
    CapturedWarnings *active = g_active.load();
    if (active && type == QtWarningMsg) {
        std::lock_guard lock(active->m_mutex);
        active->m_messages.append(text);
        return;
    }
    if (active && active->m_previous)
        active->m_previous(type, context, text);
}

} // namespace tarnix::test
