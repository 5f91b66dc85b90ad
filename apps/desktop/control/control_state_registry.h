#pragma once

#include <QJsonValue>
#include <QObject>
#include <QPointer>
#include <QString>

#include <array>
#include <functional>

namespace tarnix {

// Answers the control socket's state query. Nothing here knows the playout
// state: each owner (selection, ON AIR, DSK, BGM, decks) registers a provider
// for its own fields when it is built, and a field reads null while nobody
// provides it or its provider's owner is gone.
//
// Main thread only.
class ControlStateRegistry
{
public:
    // In the order of the answer's keys.
    enum class Field {
        SelectedItemId,
        OnAirItemId,
        CueItemId,
        DskItemId,
        BgmItemId,
        CurrentDeck,
        PositionMs,
        RemainingMs,
        ProgramPlaying,
        FtbActive,
        PlaybackRate,
        EditItemId,
        EditPositionMs,
        PflOn,
    };
    static constexpr int FieldCount = 14;

    using Provider = std::function<QJsonValue()>;

    // The first provider of a field wins until its owner is destroyed.
    // Returns false when the field already has a living provider or the owner
    // is null.
    bool setProvider(Field field, QObject *owner, Provider provider);

    // The field's key in the answer ("selectedItemId", ...).
    static QString fieldKey(Field field);

    // The current value; null without a living provider.
    QJsonValue value(Field field) const;

    // One compact JSON object with every field, keys in Field order.
    QString stateJson() const;

private:
    struct Entry {
        QPointer<QObject> owner;
        Provider provider;
    };
    std::array<Entry, FieldCount> m_entries;
};

} // namespace tarnix
