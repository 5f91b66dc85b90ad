#include "shell/ordered_json.h"

namespace tarnix {

QString jsonQuoted(const QString &text)
{
    QString out;
    out.reserve(text.size() + 2);
    out += QLatin1Char('"');
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '"': out += QLatin1String("\\\""); break;
        case '\\': out += QLatin1String("\\\\"); break;
        case '\b': out += QLatin1String("\\b"); break;
        case '\f': out += QLatin1String("\\f"); break;
        case '\n': out += QLatin1String("\\n"); break;
        case '\r': out += QLatin1String("\\r"); break;
        case '\t': out += QLatin1String("\\t"); break;
        default:
            if (c.unicode() < 0x20)
                out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                out += c;
        }
    }
    out += QLatin1Char('"');
    return out;
}

void OrderedJsonObject::appendKey(const QString &key)
{
    if (!m_body.isEmpty())
        m_body += QLatin1Char(',');
    m_body += jsonQuoted(key);
    m_body += QLatin1Char(':');
}

OrderedJsonObject &OrderedJsonObject::add(const QString &key, const QString &value)
{
    appendKey(key);
    m_body += jsonQuoted(value);
    return *this;
}

OrderedJsonObject &OrderedJsonObject::add(const QString &key, const char *value)
{
    return add(key, QString::fromUtf8(value));
}

OrderedJsonObject &OrderedJsonObject::add(const QString &key, bool value)
{
    appendKey(key);
    m_body += value ? QLatin1String("true") : QLatin1String("false");
    return *this;
}

OrderedJsonObject &OrderedJsonObject::add(const QString &key, qint64 value)
{
    appendKey(key);
    m_body += QString::number(value);
    return *this;
}

QString jsonStringArray(const QStringList &values)
{
    QString array = QStringLiteral("[");
    for (qsizetype i = 0; i < values.size(); ++i) {
        if (i)
            array += QLatin1Char(',');
        array += jsonQuoted(values.at(i));
    }
    array += QLatin1Char(']');
    return array;
}

OrderedJsonObject &OrderedJsonObject::add(const QString &key, const QStringList &values)
{
    return addEncoded(key, jsonStringArray(values));
}

OrderedJsonObject &OrderedJsonObject::addEncoded(const QString &key, const QString &json)
{
    appendKey(key);
    m_body += json;
    return *this;
}

QString OrderedJsonObject::toString() const
{
    return QLatin1Char('{') + m_body + QLatin1Char('}');
}

} // namespace tarnix
