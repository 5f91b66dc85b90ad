#include "playout/deck_source.h"

#include <cmath>

namespace tarnix {

bool isValidFileSource(const DeckSource &request)
{
    return !request.source.isEmpty() && request.inMs >= 0
           && (request.outMs < 0 || request.outMs > request.inMs) && std::isfinite(request.rate)
           && request.rate > 0.0;
}

std::optional<DeckSourceKind> deckSourceKindFor(PlaylistSourceType type)
{
    switch (type) {
    case PlaylistSourceType::file:
        return DeckSourceKind::File;
    case PlaylistSourceType::uvc:
        return DeckSourceKind::Uvc;
    case PlaylistSourceType::powerpoint:
        return DeckSourceKind::PowerPoint;
    case PlaylistSourceType::pdf:
        return DeckSourceKind::Pdf;
    }
    return std::nullopt;
}

std::optional<PlaylistSourceType> playlistSourceTypeFor(DeckSourceKind kind)
{
    switch (kind) {
    case DeckSourceKind::File:
        return PlaylistSourceType::file;
    case DeckSourceKind::Uvc:
        return PlaylistSourceType::uvc;
    case DeckSourceKind::PowerPoint:
        return PlaylistSourceType::powerpoint;
    case DeckSourceKind::Pdf:
        return PlaylistSourceType::pdf;
    }
    return std::nullopt;
}

DeckSessionKind sessionKindFor(DeckSourceKind kind)
{
    switch (kind) {
    case DeckSourceKind::File:
        return DeckSessionKind::File;
    case DeckSourceKind::Uvc:
        return DeckSessionKind::Uvc;
    case DeckSourceKind::PowerPoint:
        return DeckSessionKind::PowerPoint;
    case DeckSourceKind::Pdf:
        return DeckSessionKind::Pdf;
    }
    return DeckSessionKind::None;
}

} // namespace tarnix
