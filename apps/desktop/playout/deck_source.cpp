#include "playout/deck_source.h"

#include <cmath>

namespace tarnix {

bool isValidFileSource(const DeckSource &request)
{
    return !request.source.isEmpty() && request.inMs >= 0
           && (request.outMs < 0 || request.outMs > request.inMs) && std::isfinite(request.rate)
           && request.rate > 0.0;
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
