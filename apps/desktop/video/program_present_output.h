#pragma once

#include <QSize>
#include <QString>
#include <QtGlobal>

#include <memory>

namespace tarnix {

// Where the presenter shows a frame. Every call except sinkName() runs on
// the presenter thread, which owns the output from open() to close().
class ProgramPresentOutput
{
public:
    virtual ~ProgramPresentOutput() = default;

    // The element or device name for the PROGRAM_PRESENT lines.
    virtual QString sinkName() const = 0;

    virtual bool open(QString *error) = 0;

    // Shows the packed BGRA frame so that it fills a window of the given
    // size, scaling when that differs from the frame. False is fatal.
    virtual bool present(const quint8 *pixels, int width, int height, QSize window,
                         QString *error) = 0;

    virtual void close() = 0;
};

// Counts presents and shows nothing: the output without a window system.
std::unique_ptr<ProgramPresentOutput> createNullPresentOutput();

// ximagesink drawing into the native X11 window.
std::unique_ptr<ProgramPresentOutput> createXImagePresentOutput(quintptr window);

} // namespace tarnix
