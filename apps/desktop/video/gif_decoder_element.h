#pragma once

#include <QString>

namespace tarnix {

// "tarnixgifdec": plays a GIF file as timed video. It takes the whole file
// (image/gif, pushed), reads each frame's delay from the file's blocks and
// has Qt's GIF reader compose the frames, which it sends as BGRA with
// timestamps that advance by those delays; it answers duration and seeking
// queries and takes flushing seeks at any rate above zero. A single-frame
// GIF gives one untimed frame, as a still image does.
//
// It is registered above every other GIF reader so that playback, EDIT, DSK
// and media analysis all use it: the libav GIF demuxer of this GStreamer
// never ends its stream (it spins on a read that returns nothing at the end
// of the file) and its decoder stamps every frame with time zero.
bool registerGifDecoderElement(QString *error = nullptr);

} // namespace tarnix
