#pragma once

#include "playlist/playlist_records.h"

#include <QString>
#include <QStringView>

// Range rules of the playlist records. They only answer yes or no; the
// messages belong to the document reader and the model.
namespace tarnix {

bool isValidItemColor(PlaylistItemColor color);
bool isValidMediaType(PlaylistMediaType type);

// Every range of the settings, fades included even while disabled. The start
// and end modes are not checked here: whoever parses them checks them.
bool isValidItemSettings(const PlaylistItemSettings &settings);

bool isValidPowerPointMode(PlaylistPowerPointMode mode, PlaylistSourceType sourceType,
                           PlaylistMediaType mediaType);

// Prefix tests of live-source paths (source type `uvc`).
bool isLiveAudioUri(QStringView path);
bool isNetworkVideoUri(QStringView path);

// "live-audio://" + base64url of the UTF-8 id, without trailing "=".
QString liveAudioUri(const QString &deviceId);

// The input id of a live-audio URI, or an empty string unless the URI is the
// canonical spelling liveAudioUri() would produce.
QString liveAudioDeviceId(QStringView uri);

// The test a new item must pass before it enters a playlist. For file-backed
// sources this asks the file system, so call it off the UI thread.
bool isAddableItem(const PlaylistItem &item);

} // namespace tarnix
