#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class QTranslator;

namespace tarnix {

struct UiLanguage {
    QString key;            // "en", "ja"
    QString name;           // the language's own name
    QString resourcePath;   // compiled catalogue in the resources
};

// The interface language. Installs the catalogue of the chosen language on
// the application (English stays underneath, so a key the chosen catalogue
// lacks shows in English) and tells windows to set their texts again.
// Main thread only.
class UiLanguageManager : public QObject
{
    Q_OBJECT

public:
    explicit UiLanguageManager(QObject *parent = nullptr);
    ~UiLanguageManager() override;

    // The table of languages; the first is the default.
    static const QList<UiLanguage> &languages();
    static QString defaultLanguage();

    // Loads the language stored in "ui/language", falling back once to the
    // default. Returns false with the text of the last failure when neither
    // loads; the language in use then stays as it was.
    bool loadStoredLanguage(QString *error = nullptr);

    // Loads and installs one language. A failed change leaves the language in
    // use as it was. Every attempt logs a "READ_SOURCE translation" line.
    bool setLanguage(const QString &key, QString *error = nullptr);

    QString currentLanguage() const;

signals:
    void languageChanged(const QString &key);

private:
    QString m_current;
    std::unique_ptr<QTranslator> m_base;     // English, below the chosen catalogue
    std::unique_ptr<QTranslator> m_chosen;   // the chosen catalogue when it is not English
};

} // namespace tarnix
