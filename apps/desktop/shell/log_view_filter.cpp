#include "shell/log_view_filter.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace tarnix {

QStringList filterLogLines(const QStringList &records, int filterIndex, const QString &search)
{
    QStringList shown;
    shown.reserve(records.size());
    for (const QString &record : records) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(record.toUtf8(), &error);
        QString level;
        QString line;
        if (error.error != QJsonParseError::NoError || !document.isObject()) {
            level = QStringLiteral("ERROR");
            line = record;
        } else {
            const QJsonObject object = document.object();
            level = object.value(QLatin1String("level")).toString();
            line = QStringLiteral("%1 [%2] %3  %4")
                       .arg(object.value(QLatin1String("time")).toString(), level,
                            object.value(QLatin1String("source")).toString(),
                            object.value(QLatin1String("message")).toString());
        }
        if (filterIndex == kLogFilterWarnings && level != QLatin1String("WARN")
            && level != QLatin1String("ERROR"))
            continue;
        if (!search.isEmpty() && !line.contains(search, Qt::CaseInsensitive))
            continue;
        shown << line;
    }
    return shown;
}

} // namespace tarnix
