#pragma once

// Collects the records of the "CONTROL" logging category, from any thread,
// while it lives, and keeps them off the test output. Only one may exist at
// a time.

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <cstring>
#include <mutex>

namespace tarnix::test {

struct ControlRecord {
    QtMsgType type;
    QString text;
};

class ControlLogCapture
{
public:
    ControlLogCapture()
    {
        instance() = this;
        m_previous = qInstallMessageHandler(&ControlLogCapture::handler);
    }
    ~ControlLogCapture()
    {
        qInstallMessageHandler(m_previous);
        instance() = nullptr;
    }
    ControlLogCapture(const ControlLogCapture &) = delete;
    ControlLogCapture &operator=(const ControlLogCapture &) = delete;

    QList<ControlRecord> records() const
    {
        std::lock_guard lock(m_mutex);
        return m_records;
    }
    // Texts of the records that start with the prefix.
    QStringList texts(const QString &prefix = {}) const
    {
        QStringList out;
        for (const ControlRecord &record : records()) {
            if (record.text.startsWith(prefix))
                out << record.text;
        }
        return out;
    }
    void clear()
    {
        std::lock_guard lock(m_mutex);
        m_records.clear();
    }

private:
    static ControlLogCapture *&instance()
    {
        static ControlLogCapture *current = nullptr;
        return current;
    }
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        ControlLogCapture *self = instance();
        if (!self)
            return;
        if (context.category && std::strcmp(context.category, "CONTROL") == 0) {
            std::lock_guard lock(self->m_mutex);
            self->m_records.append({type, text});
        } else if (type != QtDebugMsg && self->m_previous) {
            self->m_previous(type, context, text);
        }
    }

    mutable std::mutex m_mutex;
    QList<ControlRecord> m_records;
    QtMessageHandler m_previous = nullptr;
};

} // namespace tarnix::test
