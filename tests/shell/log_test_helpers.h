#pragma once

// Reading of JSONL log files for the shell tests.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QStringList>

namespace tarnix::test {

// Keys of the top-level JSON object in the order they are written. The
// document is checked by QJsonDocument, which sorts keys and therefore
// cannot tell the order itself.
inline QStringList topLevelKeysInOrder(const QByteArray &json)
{
    QStringList keys;
    int depth = 0;
    bool expectKey = false;
    for (qsizetype i = 0; i < json.size(); ++i) {
        const char c = json.at(i);
        if (c == '"') {
            qsizetype end = i + 1;
            QByteArray text;
            while (end < json.size() && json.at(end) != '"') {
                if (json.at(end) == '\\')
                    ++end;
                text += json.at(end);
                ++end;
            }
            if (depth == 1 && expectKey)
                keys << QString::fromUtf8(text);
            expectKey = false;
            i = end;
        } else if (c == '{' || c == '[') {
            ++depth;
            expectKey = (c == '{' && depth == 1);
        } else if (c == '}' || c == ']') {
            --depth;
        } else if (c == ',' && depth == 1) {
            expectKey = true;
        }
    }
    return keys;
}

inline QList<QByteArray> fileLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<QByteArray> lines = file.readAll().split('\n');
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

// Every record of every "tarnix-*.jsonl" file in the folder, oldest file first.
inline QList<QJsonObject> logRecords(const QString &directory, QList<QByteArray> *raw = nullptr)
{
    QList<QJsonObject> records;
    const QStringList files =
        QDir(directory).entryList({QStringLiteral("tarnix-*.jsonl")}, QDir::Files, QDir::Name);
    for (const QString &name : files) {
        for (const QByteArray &line : fileLines(QDir(directory).filePath(name))) {
            records << QJsonDocument::fromJson(line).object();
            if (raw)
                *raw << line;
        }
    }
    return records;
}

inline QStringList messages(const QList<QJsonObject> &records, const QString &source = {})
{
    QStringList out;
    for (const QJsonObject &record : records) {
        if (source.isEmpty() || record.value(QLatin1String("source")).toString() == source)
            out << record.value(QLatin1String("message")).toString();
    }
    return out;
}

} // namespace tarnix::test
