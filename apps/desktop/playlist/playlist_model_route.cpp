#include "playlist/playlist_model.h"
#include "playlist/playlist_model_impl.h"

#include <algorithm>
#include <cmath>

namespace tarnix {
namespace {

// How much an end crossfade overlaps the item that follows.
qint64 crossfadeOverlap(const PlaylistFadeSetting &fade, qint64 itemMs)
{
    if (!fade.enabled)
        return 0;
    const qint64 overlap = std::min(std::clamp<qint64>(fade.durationMs, 100, 60000), itemMs / 2);
    return overlap < 100 ? 0 : overlap;
}

} // namespace

QString playlistRouteNote(PlaylistRouteStop stop)
{
    switch (stop) {
    case PlaylistRouteStop::End:
        return {};
    case PlaylistRouteStop::StartPause:
        return QStringLiteral("The starting item's Start Mode is PAUSE. Mapping stops at this item.");
    case PlaylistRouteStop::DestinationPause:
        return QStringLiteral("The next item's Start Mode is PAUSE. Mapping stops before that item.");
    case PlaylistRouteStop::LiveOrUnknown:
        return QStringLiteral("A LIVE item or an item with unknown duration was found. Total is unlimited.");
    case PlaylistRouteStop::InfiniteRepeat:
        return QStringLiteral("An infinite repeat was found. Total is unlimited.");
    case PlaylistRouteStop::Loop:
        return QStringLiteral("A playback loop was found. Total is unlimited.");
    case PlaylistRouteStop::DestinationUnavailable:
        return QStringLiteral("The NEXT or GOTO destination is unavailable. Mapping stops here.");
    case PlaylistRouteStop::DestinationBgm:
        return QStringLiteral("The destination is in a BGM playlist and cannot continue in ON AIR. Mapping stops here.");
    }
    return {};
}

quint64 PlaylistModel::successor(quint64 itemId, PlaylistEndMode mode, quint64 excludeId) const
{
    const auto eligible = [&](quint64 id) {
        const auto it = d->items.constFind(id);
        return id != 0 && id != excludeId && it != d->items.cend() && !d->offline.contains(id)
            && !d->pending.contains(id) && !it->filePath.isEmpty()
            && d->playlists.value(it->playlistNumber).mode != PlaylistMode::bgm;
    };
    const auto it = d->items.constFind(itemId);
    if (it == d->items.cend())
        return 0;
    if (mode == PlaylistEndMode::goto_)
        return eligible(it->settings.gotoTargetItemId) ? it->settings.gotoTargetItemId : 0;
    if (mode != PlaylistEndMode::next)
        return 0;
    // Cyclic, starting behind the item; the scan may end on the item itself.
    const QList<quint64> &ids = d->order[it->playlistNumber];
    const qsizetype count = ids.size();
    const qsizetype start = static_cast<qsizetype>(it->position);  // index of the row behind
    for (qsizetype step = 0; step < count; ++step) {
        const quint64 candidate = ids.at((start + step) % count);
        if (eligible(candidate))
            return candidate;
    }
    return 0;
}

PlaylistRoute PlaylistModel::route(quint64 itemId, const PlaylistRouteOptions &options) const
{
    PlaylistRoute route;
    double rate = options.playbackRate.value_or(1.0);
    if (!std::isfinite(rate) || rate <= 0)
        rate = 1.0;
    const auto scaled = [rate](qint64 ms) { return static_cast<qint64>(std::llround(double(ms) / rate)); };
    qint64 total = 0;
    QSet<quint64> visited;
    quint64 current = itemId;
    bool first = true;
    auto stop = [&](PlaylistRouteStop reason, bool unlimited) {
        route.stop = reason;
        if (!unlimited)
            route.totalMs = total;
        return route;
    };
    for (;;) {
        const auto it = d->items.constFind(current);
        if (it == d->items.cend())
            return stop(PlaylistRouteStop::DestinationUnavailable, false);
        visited.insert(current);
        const PlaylistItemSettings &s = it->settings;
        PlaylistRouteRow row;
        row.sequence = route.rows.size() + 1;
        row.playlistNumber = it->playlistNumber;
        row.row = static_cast<int>(it->position);
        row.itemId = current;
        row.name = it->displayName;
        row.startMode = s.startMode;
        row.endMode = s.endMode;
        const bool fromOnAirPosition = first && options.startPositionMs.has_value();
        if (first && !fromOnAirPosition && s.startMode == PlaylistStartMode::pause) {
            row.durationMs = 0;
            route.rows.append(row);
            return stop(PlaylistRouteStop::StartPause, false);
        }
        std::optional<qint64> outMs = s.outPointMs;
        if (!outMs)
            outMs = knownDuration(current);
        if (it->sourceType == PlaylistSourceType::uvc || !outMs) {
            route.rows.append(row);
            return stop(PlaylistRouteStop::LiveOrUnknown, true);
        }
        if (s.endMode == PlaylistEndMode::repeat && s.repeatCount == 0) {
            route.rows.append(row);
            return stop(PlaylistRouteStop::InfiniteRepeat, true);
        }
        const qint64 fullMs = scaled(std::max<qint64>(0, *outMs - s.inPointMs));
        const qint64 startMs = fromOnAirPosition ? std::clamp(*options.startPositionMs, s.inPointMs, *outMs)
                                                 : s.inPointMs;
        qint64 itemMs = scaled(*outMs - startMs);
        PlaylistEndMode effectiveEnd = s.endMode;
        quint64 gotoTarget = s.gotoTargetItemId;
        if (s.endMode == PlaylistEndMode::repeat) {
            const int done = fromOnAirPosition ? std::clamp(options.repeatProgress, 0, s.repeatCount - 1) : 0;
            const qint64 passes = s.repeatCount - done;
            itemMs += (passes - 1) * (fullMs - crossfadeOverlap(s.endCrossfade, fullMs));
            switch (s.repeatEndMode) {
            case PlaylistRepeatEndMode::stop: effectiveEnd = PlaylistEndMode::stop; break;
            case PlaylistRepeatEndMode::pause: effectiveEnd = PlaylistEndMode::pause; break;
            case PlaylistRepeatEndMode::next: effectiveEnd = PlaylistEndMode::next; break;
            case PlaylistRepeatEndMode::goto_: effectiveEnd = PlaylistEndMode::goto_; break;
            }
        }
        row.durationMs = itemMs;
        route.rows.append(row);
        total += itemMs;

        quint64 destination = 0;
        if (effectiveEnd == PlaylistEndMode::next) {
            const QList<quint64> &ids = d->order[it->playlistNumber];
            destination = ids.at(static_cast<qsizetype>(it->position) % ids.size());
        } else if (effectiveEnd == PlaylistEndMode::goto_) {
            destination = gotoTarget;
        } else {
            return stop(PlaylistRouteStop::End, false);
        }
        const auto next = d->items.constFind(destination);
        if (destination == 0 || next == d->items.cend())
            return stop(PlaylistRouteStop::DestinationUnavailable, false);
        if (d->playlists.value(next->playlistNumber).mode == PlaylistMode::bgm)
            return stop(PlaylistRouteStop::DestinationBgm, false);
        if (visited.contains(destination))
            return stop(PlaylistRouteStop::Loop, true);
        if (next->settings.startMode == PlaylistStartMode::pause)
            return stop(PlaylistRouteStop::DestinationPause, false);
        const qint64 lastPassMs = s.endMode == PlaylistEndMode::repeat ? fullMs : itemMs;
        total -= crossfadeOverlap(s.endCrossfade, lastPassMs);
        current = destination;
        first = false;
    }
}

} // namespace tarnix
