#include "shell/localized_text.h"

#include <QCoreApplication>
#include <QTranslator>

#include <memory>

namespace tarnix {

namespace {

// The English catalogue, loaded once and never installed: the last resort of
// every lookup, so that a key missing from another catalogue (or a lookup
// before any language is loaded) still shows English.
const QTranslator *englishCatalogue()
{
    static const std::unique_ptr<QTranslator> catalogue = [] {
        auto translator = std::make_unique<QTranslator>();
        if (!translator->load(QStringLiteral(":/i18n/tarnix_en.qm")))
            return std::unique_ptr<QTranslator>();
        return translator;
    }();
    return catalogue.get();
}

QString englishText(const QByteArray &key)
{
    const QTranslator *catalogue = englishCatalogue();
    return catalogue ? catalogue->translate(nullptr, key.constData()) : QString();
}

QString resolveKey(const QString &key, const QString &fallback)
{
    if (key.isEmpty())
        return fallback;
    const QByteArray id = key.toUtf8();
    const QString installed = qtTrId(id.constData());
    if (!installed.isEmpty() && installed != key)
        return installed;
    const QString english = englishText(id);
    if (!english.isEmpty())
        return english;
    return fallback.isEmpty() ? key : fallback;
}

// Fills %1..%99 in one pass, so that an argument holding "%2" stays as it is.
QString substitute(const QString &text, const QStringList &args)
{
    if (args.isEmpty())
        return text;
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('%') && i + 1 < text.size() && text.at(i + 1).isDigit()) {
            qsizetype end = i + 1;
            int number = 0;
            while (end < text.size() && text.at(end).isDigit() && end < i + 3)
                number = number * 10 + text.at(end++).digitValue();
            if (number >= 1 && number <= args.size()) {
                out += args.at(number - 1);
                i = end - 1;
                continue;
            }
        }
        out += text.at(i);
    }
    return out;
}

} // namespace

QString LocalizedText::toString() const
{
    return substitute(resolveKey(key, fallback), args);
}

QString localized(const char *key)
{
    return resolveKey(QString::fromUtf8(key), QString());
}

bool hasEnglishText(const char *key)
{
    return !englishText(QByteArray(key)).isEmpty();
}

} // namespace tarnix
