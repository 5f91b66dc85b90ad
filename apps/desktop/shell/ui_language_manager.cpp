#include "shell/ui_language_manager.h"

#include "shell/localized_text.h"
#include "shell/log_categories.h"
#include "shell/settings_store.h"

#include <QCoreApplication>
#include <QTranslator>

namespace tarnix {

namespace {

const UiLanguage *findLanguage(const QString &key)
{
    for (const UiLanguage &language : UiLanguageManager::languages()) {
        if (language.key == key)
            return &language;
    }
    return nullptr;
}

std::unique_ptr<QTranslator> loadCatalogue(const QString &path)
{
    auto translator = std::make_unique<QTranslator>();
    const bool loaded = translator->load(path);
    qCInfo(lcSystem).noquote() << QStringLiteral("READ_SOURCE translation %1 loaded=%2")
                                      .arg(path, loaded ? QStringLiteral("true") : QStringLiteral("false"));
    if (!loaded)
        return nullptr;
    return translator;
}

} // namespace

UiLanguageManager::UiLanguageManager(QObject *parent)
    : QObject(parent)
{
}

UiLanguageManager::~UiLanguageManager()
{
    if (m_chosen)
        QCoreApplication::removeTranslator(m_chosen.get());
    if (m_base)
        QCoreApplication::removeTranslator(m_base.get());
}

const QList<UiLanguage> &UiLanguageManager::languages()
{
    static const QList<UiLanguage> table = {
        {QStringLiteral("en"), QStringLiteral("English"), QStringLiteral(":/i18n/tarnix_en.qm")},
        {QStringLiteral("ja"), QString::fromUtf8("日本語"), QStringLiteral(":/i18n/tarnix_ja.qm")},
    };
    return table;
}

QString UiLanguageManager::defaultLanguage()
{
    return languages().first().key;
}

QString UiLanguageManager::currentLanguage() const
{
    return m_current;
}

bool UiLanguageManager::setLanguage(const QString &key, QString *error)
{
    const UiLanguage *language = findLanguage(key);
    if (!language) {
        if (error)
            *error = localized("settings.language.unknown");
        return false;
    }
    const UiLanguage &english = languages().first();
    std::unique_ptr<QTranslator> base = loadCatalogue(english.resourcePath);
    std::unique_ptr<QTranslator> chosen;
    if (language->key != english.key) {
        chosen = loadCatalogue(language->resourcePath);
        if (!chosen) {
            if (error)
                *error = LocalizedText(QStringLiteral("settings.language.load_failed"), {language->resourcePath})
                             .toString();
            return false;
        }
    } else if (!base) {
        if (error)
            *error = LocalizedText(QStringLiteral("settings.language.load_failed"), {english.resourcePath})
                         .toString();
        return false;
    }

    if (m_chosen)
        QCoreApplication::removeTranslator(m_chosen.get());
    if (m_base)
        QCoreApplication::removeTranslator(m_base.get());
    m_base = std::move(base);
    m_chosen = std::move(chosen);
    // The catalogue installed last is asked first.
    if (m_base)
        QCoreApplication::installTranslator(m_base.get());
    if (m_chosen)
        QCoreApplication::installTranslator(m_chosen.get());
    const bool changed = m_current != language->key;
    m_current = language->key;
    if (error)
        error->clear();
    if (changed)
        emit languageChanged(m_current);
    return true;
}

bool UiLanguageManager::loadStoredLanguage(QString *error)
{
    const QString configured = readStringSetting(QStringLiteral("ui/language"));
    QString firstError;
    if (setLanguage(configured, &firstError))
        return true;
    if (configured != defaultLanguage()) {
        qCWarning(lcSystem).noquote() << firstError;
        if (setLanguage(defaultLanguage(), error))
            return true;
        return false;
    }
    if (error)
        *error = firstError;
    return false;
}

} // namespace tarnix
