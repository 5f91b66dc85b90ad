#pragma once

#include "playlist/playlist_enums.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <vector>

// The pictures a tile shows when it has no frame of its own, and the framing
// of pictures that do not fill the tile. Painting on QImage only, so any
// thread may call these.
namespace tarnix {

// "VIDEO", "AUDIO", "IMAGE", "PPTX" or "MEDIA": the kind of media the
// operator will recognise, by the item's media type, else by the suffix.
QString thumbnailCardLabel(const QString &path, PlaylistMediaType mediaType);

// The card that stands for a picture: the label alone, or, with an error,
// the label, "Failed" and the error text.
QImage paintPlaceholderCard(const QString &label, QSize size);
QImage paintFailureCard(const QString &label, const QString &error, QSize size);

// The picture of a live-audio input, which has no frames to show.
QImage paintLiveAudioCard(QSize size);

// The picture scaled to fit the size, aspect kept, centred on black as a
// video's borders are.
QImage fitOntoCard(const QImage &picture, QSize size);

// One bar per column from the peak level of that column (0 to 1), the
// caption text in the top left corner.
QImage paintWaveform(const std::vector<float> &columnPeaks, const QString &caption, QSize size);

} // namespace tarnix
