#include "control/control_state_registry.h"

#include "control/control_json.h"
#include "shell/ordered_json.h"

namespace tarnix {

bool ControlStateRegistry::setProvider(Field field, QObject *owner, Provider provider)
{
    Entry &entry = m_entries[std::size_t(field)];
    if (!owner || !provider || (entry.owner && entry.provider))
        return false;
    entry.owner = owner;
    entry.provider = std::move(provider);
    return true;
}

QString ControlStateRegistry::fieldKey(Field field)
{
    switch (field) {
    case Field::SelectedItemId: return QStringLiteral("selectedItemId");
    case Field::OnAirItemId: return QStringLiteral("onAirItemId");
    case Field::CueItemId: return QStringLiteral("cueItemId");
    case Field::DskItemId: return QStringLiteral("dskItemId");
    case Field::BgmItemId: return QStringLiteral("bgmItemId");
    case Field::CurrentDeck: return QStringLiteral("currentDeck");
    case Field::PositionMs: return QStringLiteral("positionMs");
    case Field::RemainingMs: return QStringLiteral("remainingMs");
    case Field::ProgramPlaying: return QStringLiteral("programPlaying");
    case Field::FtbActive: return QStringLiteral("ftbActive");
    case Field::PlaybackRate: return QStringLiteral("playbackRate");
    case Field::EditItemId: return QStringLiteral("editItemId");
    case Field::EditPositionMs: return QStringLiteral("editPositionMs");
    case Field::PflOn: return QStringLiteral("pflOn");
    }
    return QString();
}

QJsonValue ControlStateRegistry::value(Field field) const
{
    const Entry &entry = m_entries[std::size_t(field)];
    if (!entry.owner || !entry.provider)
        return QJsonValue(QJsonValue::Null);
    const QJsonValue value = entry.provider();
    return value.isUndefined() ? QJsonValue(QJsonValue::Null) : value;
}

QString ControlStateRegistry::stateJson() const
{
    OrderedJsonObject object;
    for (int index = 0; index < FieldCount; ++index) {
        const auto field = Field(index);
        object.addEncoded(fieldKey(field), encodedJsonValue(value(field)));
    }
    return object.toString();
}

} // namespace tarnix
