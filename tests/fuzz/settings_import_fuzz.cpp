// Fuzz entry for a settings restore: the transfer file reader with every
// rule of the restore, the MIDI configuration's own rules and the
// keyboard's check of its bindings. Besides "no crash, no hang, no leak" it
// checks the promises a restore makes:
// - what it accepts holds only keys a transfer carries;
// - what the export would write of it is accepted again, as the same
//   settings, and written the same, byte for byte;
// - through the settings file and back (a file read afresh, not this
//   process's cache of it) every value comes back as it was accepted.

#include "control/shortcut_table.h"
#include "shell/settings_transfer_document.h"
#include "shell/settings_transfer_rules.h"
#include "shell/settings_transfer_store.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QSettings>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void fail(const char *why, const QString &detail = {})
{
    std::fprintf(stderr, "%s %s\n", why, qPrintable(detail));
    std::abort();
}

// The keyboard's table holds the platform's standard keys, which only a
// GUI application knows; one without a screen serves.
void ensureApplication()
{
    if (QCoreApplication::instance())
        return;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "settings_import_fuzz";
    static char *argv[] = {name, nullptr};
    static QGuiApplication *application = new QGuiApplication(argc, argv);
    Q_UNUSED(application);
}

const tarnix::ShortcutBindingsCheck &shortcutCheck()
{
    static const tarnix::ShortcutBindingsCheck check = &tarnix::shortcuts::validateBindings;
    return check;
}

// A folder of this process's own, made for each input and removed with
// its files (libFuzzer ends without running exit handlers).
QString scratchDirectory()
{
    static const QString path =
        QDir::temp().filePath(QStringLiteral("tarnix-settings-fuzz-%1").arg(QCoreApplication::applicationPid()));
    return path;
}

// Writes the settings to a fresh file, copies it to a name this process
// has never opened (so that the read parses the text rather than finding
// the writer's values in QSettings' cache) and reads it back.
void checkSettingsFileRoundTrip(const QJsonObject &settings)
{
    // Nothing to write leaves no file.
    if (settings.isEmpty())
        return;
    static quint64 serial = 0;
    ++serial;
    QDir().mkpath(scratchDirectory());
    const QString written = QDir(scratchDirectory()).filePath(QStringLiteral("w%1.ini").arg(serial));
    const QString copied = QDir(scratchDirectory()).filePath(QStringLiteral("r%1.ini").arg(serial));
    {
        QSettings file(written, QSettings::IniFormat);
        QString error;
        if (!tarnix::writeTransferSettings(file, settings, &error))
            fail("an accepted restore could not be written:", error);
    }
    if (!QFile::copy(written, copied))
        fail("the written settings file could not be copied");
    QJsonObject readBack;
    {
        QSettings file(copied, QSettings::IniFormat);
        readBack = tarnix::readTransferSettings(file);
    }
    QFile::remove(written);
    QFile::remove(copied);
    QDir().rmdir(scratchDirectory());
    for (auto it = settings.begin(); it != settings.end(); ++it) {
        if (readBack.value(it.key()) != it.value())
            fail("a value changed through the settings file:",
                 it.key() + QStringLiteral(" wrote ")
                     + QString::fromUtf8(QJsonDocument(QJsonObject{{it.key(), it.value()}}).toJson(QJsonDocument::Compact))
                     + QStringLiteral(" read ")
                     + QString::fromUtf8(
                         QJsonDocument(QJsonObject{{it.key(), readBack.value(it.key())}}).toJson(QJsonDocument::Compact)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace tarnix;
    ensureApplication();
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QString error;
    const std::optional<QJsonObject> settings = readSettingsTransferDocument(bytes, shortcutCheck(), &error);
    if (!settings) {
        if (error.isEmpty())
            fail("a refusal without a reason");
        return 0;
    }
    for (auto it = settings->begin(); it != settings->end(); ++it) {
        if (!isTransferSetting(it.key()))
            fail("an accepted restore carries a key the transfer does not:", it.key());
    }

    const QByteArray exported = settingsTransferDocument(*settings);
    const std::optional<QJsonObject> again = readSettingsTransferDocument(exported, shortcutCheck(), &error);
    if (!again)
        fail("the export of an accepted restore is refused:", error);
    if (*again != *settings)
        fail("the export of an accepted restore reads back different settings");
    if (settingsTransferDocument(*again) != exported)
        fail("the second export differs from the first");

    checkSettingsFileRoundTrip(*settings);
    return 0;
}
