#pragma once

#include "shell/localized_text.h"

#include <QStringList>

// The EDIT session's operator texts, with their catalogue keys.
namespace tarnix::edit_text {

inline QString text(const char *key, const char *fallback, const QStringList &args = {})
{
    return LocalizedText(QString::fromLatin1(key), args, QString::fromUtf8(fallback)).toString();
}

inline QString pointsLockedOnAir()
{
    return text("edit.error.points_locked", "The In/Out points of an item currently on air cannot be changed.");
}
inline QString pointsLockedBgm()
{
    return text("edit.error.points_bgm_active",
                "The In/Out points of an item in use by BGM cannot be changed. Stop BGM first.");
}
inline QString pointsFileOnly()
{
    return text("edit.error.points_file_only", "In/Out points can only be changed for file sources.");
}
inline QString pointsSettingsLocked()
{
    return text("edit.error.points_settings_locked",
                "This item's settings are locked. Its In/Out points cannot be changed.");
}

} // namespace tarnix::edit_text
