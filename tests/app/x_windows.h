#pragma once

// Top-level windows of the application as the X server sees them: found by
// title with xwininfo, their map state, and their picture read with xwd.
// The test's DISPLAY names the server.

#include <QImage>
#include <QProcess>
#include <QRect>
#include <QRegularExpression>
#include <QString>
#include <QtEndian>

namespace tarnix::test {

// The id ("0x…") of the top-level window whose title starts with `title`.
inline QString topLevelWindowId(const QString &title)
{
    QProcess tree;
    tree.start(QStringLiteral("xwininfo"), {"-root", "-children"});
    if (!tree.waitForFinished(10000))
        return {};
    const QRegularExpression line("^\\s*(0x[0-9a-f]+) \"" + QRegularExpression::escape(title));
    for (const QString &text : QString::fromLocal8Bit(tree.readAllStandardOutput()).split('\n')) {
        const QRegularExpressionMatch match = line.match(text);
        if (match.hasMatch())
            return match.captured(1);
    }
    return {};
}

// "IsViewable", "IsUnMapped", …; empty when there is no such window.
inline QString mapState(const QString &title)
{
    const QString id = topLevelWindowId(title);
    if (id.isEmpty())
        return {};
    QProcess info;
    info.start(QStringLiteral("xwininfo"), {"-id", id});
    if (!info.waitForFinished(10000))
        return {};
    return QRegularExpression("Map State: (\\w+)").match(QString::fromLocal8Bit(info.readAllStandardOutput())).captured(1);
}

// Where a top-level window is on the root window; null when it is missing.
inline QRect windowGeometry(const QString &title)
{
    const QString id = topLevelWindowId(title);
    if (id.isEmpty())
        return {};
    QProcess info;
    info.start(QStringLiteral("xwininfo"), {"-id", id});
    if (!info.waitForFinished(10000))
        return {};
    const QString text = QString::fromLocal8Bit(info.readAllStandardOutput());
    auto number = [&text](const char *label) {
        return QRegularExpression(QString::fromLatin1(label) + ":\\s+(-?\\d+)").match(text).captured(1).toInt();
    };
    return QRect(number("Absolute upper-left X"), number("Absolute upper-left Y"), number("Width"), number("Height"));
}

// Moves a top-level window (there is no window manager under the test's
// X server, so nothing moves it back); false when it is missing.
inline bool moveWindow(const QString &title, int x, int y)
{
    const QString id = topLevelWindowId(title);
    if (id.isEmpty())
        return false;
    QProcess move;
    move.start(QStringLiteral("xdotool"), {"windowmove", QString::number(id.toUInt(nullptr, 16)), QString::number(x),
                                          QString::number(y)});
    return move.waitForFinished(10000) && move.exitCode() == 0;
}

// The window's picture from an xwd dump (ZPixmap, 24 or 32 bits a pixel,
// the layout every TrueColor Xvfb screen uses). Null with a reason when
// the window is missing or the dump has another layout.
inline QImage grabWindow(const QString &title, QString *error)
{
    const QString id = topLevelWindowId(title);
    if (id.isEmpty()) {
        *error = QStringLiteral("no window titled %1").arg(title);
        return {};
    }
    QProcess dump;
    dump.start(QStringLiteral("xwd"), {"-silent", "-id", id});
    if (!dump.waitForFinished(20000) || dump.exitCode() != 0) {
        *error = QStringLiteral("xwd failed: %1").arg(QString::fromLocal8Bit(dump.readAllStandardError()));
        return {};
    }
    const QByteArray data = dump.readAllStandardOutput();
    auto field = [&](int index) { return qFromBigEndian<quint32>(data.constData() + 4 * index); };
    if (data.size() < 100) {
        *error = QStringLiteral("short xwd dump");
        return {};
    }
    const quint32 headerSize = field(0), format = field(2), width = field(4), height = field(5);
    const quint32 byteOrder = field(7), bitsPerPixel = field(11), bytesPerLine = field(12);
    const quint32 masks[3] = {field(14), field(15), field(16)};
    const quint32 colours = field(19);
    const qsizetype offset = qsizetype(headerSize) + qsizetype(colours) * 12;
    if (format != 2 || (bitsPerPixel != 32 && bitsPerPixel != 24)
        || data.size() < offset + qsizetype(bytesPerLine) * height) {
        *error = QStringLiteral("unexpected xwd layout: format %1, %2 bits").arg(format).arg(bitsPerPixel);
        return {};
    }
    auto channel = [](quint32 pixel, quint32 mask) {
        int shift = 0;
        while (mask && !(mask & 1)) {
            mask >>= 1;
            ++shift;
        }
        return int((pixel >> shift) & mask) * 255 / int(mask ? mask : 1);
    };
    QImage image(int(width), int(height), QImage::Format_RGB32);
    const int bytes = int(bitsPerPixel / 8);
    for (quint32 y = 0; y < height; ++y) {
        const auto *row = reinterpret_cast<const uchar *>(data.constData() + offset + qsizetype(y) * bytesPerLine);
        for (quint32 x = 0; x < width; ++x) {
            quint32 pixel = 0;
            for (int b = 0; b < bytes; ++b) {
                const quint32 byte = row[x * bytes + b];
                pixel |= byteOrder == 0 ? byte << (8 * b) : byte << (8 * (bytes - 1 - b));
            }
            image.setPixel(int(x), int(y),
                           qRgb(channel(pixel, masks[0]), channel(pixel, masks[1]), channel(pixel, masks[2])));
        }
    }
    return image;
}

} // namespace tarnix::test
