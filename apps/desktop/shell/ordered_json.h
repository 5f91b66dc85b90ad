#pragma once

#include <QString>
#include <QStringList>

namespace tarnix {

// Builds one compact JSON object whose keys stay in the order they were
// added. QJsonObject sorts its keys, which records with a fixed key order
// cannot use.
class OrderedJsonObject
{
public:
    OrderedJsonObject &add(const QString &key, const QString &value);
    OrderedJsonObject &add(const QString &key, const char *value);
    OrderedJsonObject &add(const QString &key, bool value);
    OrderedJsonObject &add(const QString &key, qint64 value);
    OrderedJsonObject &add(const QString &key, int value) { return add(key, qint64(value)); }
    OrderedJsonObject &add(const QString &key, const QStringList &values);
    // Adds an already encoded JSON value as it stands.
    OrderedJsonObject &addEncoded(const QString &key, const QString &json);

    QString toString() const;

private:
    void appendKey(const QString &key);
    QString m_body;
};

// The JSON string literal of a text, quotes included. Control characters are
// escaped; everything else passes through as Unicode.
QString jsonQuoted(const QString &text);

// A JSON array of strings.
QString jsonStringArray(const QStringList &values);

} // namespace tarnix
