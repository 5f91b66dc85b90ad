// Helper process of the settings test: reads or writes one key of a given
// settings file the way the application does, in a process of its own, so
// that nothing cached by QSettings in the test process can hide a fault.
//
//   settings_probe <ini> write <key> <json value>
//   settings_probe <ini> read <key>        prints {"type": ..., "value": ...}

#include "shell/application_identity.h"
#include "shell/settings_store.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4)
        return 2;
    tarnix::publishSettingsLocation(args.at(1), false);
    const QString key = args.at(3);
    if (args.at(2) == QLatin1String("write") && args.size() == 5) {
        const QJsonDocument document = QJsonDocument::fromJson("[" + args.at(4).toUtf8() + "]");
        QString error;
        if (!tarnix::writeSetting(key, document.array().at(0).toVariant(), &error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
        return 0;
    }
    const QVariant value = tarnix::readSetting(key);
    QJsonObject out;
    out.insert(QStringLiteral("type"), QString::fromLatin1(value.typeName()));
    out.insert(QStringLiteral("value"), value.metaType().id() == QMetaType::QJsonValue
                                            ? value.value<QJsonValue>()
                                            : QJsonValue::fromVariant(value));
    std::fputs(QJsonDocument(out).toJson(QJsonDocument::Compact).constData(), stdout);
    return 0;
}
