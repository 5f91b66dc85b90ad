#pragma once

// Collects log records while it lives, from any thread (GStreamer's streaming
// threads log too), and restores the previous message handler when it goes,
// also when a failed check leaves the test function early. Only one capture
// may exist at a time.

#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace tarnix::testkit {

struct CapturedRecord {
    QtMsgType type = QtDebugMsg;
    QString category;
    QString text;
};

class LogCapture
{
public:
    struct Options {
        // Only records of this logging category; empty: every category.
        QString category;
        // Only records at least this severe (debug < info < warning < critical).
        QtMsgType minimumType = QtDebugMsg;
        // Only records whose text starts with this.
        QString prefix;
        // Records not captured: warnings and worse go on to the previous
        // handler (the test's output); debug and info lines are dropped.
        bool forwardUncaptured = true;
    };

    // Warnings and worse of every category.
    static Options warnings()
    {
        Options options;
        options.minimumType = QtWarningMsg;
        return options;
    }

    // Every record of one logging category ("CONTROL", "PLAYOUT", ...).
    static Options category(const QString &name)
    {
        Options options;
        options.category = name;
        return options;
    }

    LogCapture();
    explicit LogCapture(Options options);
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    QList<CapturedRecord> records() const;
    // Texts of the captured records that start with the prefix.
    QStringList texts(const QString &prefix = {}) const;
    int count(const QString &prefix) const;
    bool contains(const QString &prefix) const;
    // The first captured text the pattern matches, or an empty string.
    QString find(const QRegularExpression &pattern) const;
    QString find(const QString &pattern) const { return find(QRegularExpression(pattern)); }
    void clear();

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &text);

    Options m_options;
    QList<CapturedRecord> m_records;  // guarded by the capture's mutex
};

// Severity order of Qt's message types (QtInfoMsg's number is above
// QtFatalMsg's).
int severityOf(QtMsgType type);

} // namespace tarnix::testkit
