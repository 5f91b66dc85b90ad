#include "kit/item_request.h"

#include <QFile>
#include <QFileInfo>

namespace tarnix::testkit {

ItemRequest::ItemRequest(const QString &path)
{
    m_request.filePath = path;
    m_request.displayName = QFileInfo(path).fileName();
    m_request.mediaType = PlaylistMediaType::video;
}

ItemRequest &ItemRequest::name(const QString &displayName)
{
    m_request.displayName = displayName;
    return *this;
}

ItemRequest &ItemRequest::type(PlaylistMediaType mediaType)
{
    m_request.mediaType = mediaType;
    return *this;
}

ItemRequest &ItemRequest::source(PlaylistSourceType sourceType)
{
    m_request.sourceType = sourceType;
    return *this;
}

ItemRequest &ItemRequest::playlist(qint32 number)
{
    m_request.targetPlaylistNumber = number;
    return *this;
}

ItemRequest &ItemRequest::settings(const PlaylistItemSettings &settings)
{
    m_request.settings = settings;
    return *this;
}

ItemRequest &ItemRequest::playing()
{
    m_request.settings.startMode = PlaylistStartMode::play;
    return *this;
}

ItemRequest &ItemRequest::endMode(PlaylistEndMode mode)
{
    m_request.settings.endMode = mode;
    return *this;
}

ItemRequest &ItemRequest::repeat(qint32 count, PlaylistRepeatEndMode after)
{
    m_request.settings.endMode = PlaylistEndMode::repeat;
    m_request.settings.repeatCount = count;
    m_request.settings.repeatEndMode = after;
    return *this;
}

ItemRequest &ItemRequest::inPoint(qint64 ms)
{
    m_request.settings.inPointMs = ms;
    return *this;
}

QString touchFile(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        (void)file.open(QIODevice::WriteOnly);
    return path;
}

} // namespace tarnix::testkit
