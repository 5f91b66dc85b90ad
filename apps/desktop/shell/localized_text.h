#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>

namespace tarnix {

// A text to show, kept as its translation key and arguments so that it is
// resolved in the language in use at the moment it is shown.
struct LocalizedText {
    QString key;          // dotted id in the catalogues, e.g. "startup.gstreamer_runtime_missing"
    QStringList args;     // fill %1, %2, ... in order
    QString fallback;     // shown when no catalogue knows the key

    LocalizedText() = default;
    LocalizedText(QString key, QStringList args = {}, QString fallback = {})
        : key(std::move(key)), args(std::move(args)), fallback(std::move(fallback))
    {
    }

    // The text in the language in use; a key no loaded catalogue translates
    // falls back to the English catalogue, then to the fallback, then to the
    // key itself, so a missing text is visible rather than blank.
    QString toString() const;
    bool isEmpty() const { return key.isEmpty() && fallback.isEmpty(); }

    friend bool operator==(const LocalizedText &, const LocalizedText &) = default;
};

// The text of a key with no arguments, resolved now.
QString localized(const char *key);

// Whether the key has a text in the built-in English catalogue.
bool hasEnglishText(const char *key);

} // namespace tarnix

Q_DECLARE_METATYPE(tarnix::LocalizedText)
