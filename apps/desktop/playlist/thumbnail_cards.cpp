#include "playlist/thumbnail_cards.h"

#include <QFileInfo>
#include <QFont>
#include <QPainter>

#include <algorithm>

namespace tarnix {

namespace {

const QColor kFailureBackground(0x3d, 0x20, 0x23);
const QColor kFailureLabel(0xff, 0xc1, 0xc4);
const QColor kFailureWord(0xd4, 0xda, 0xdd);
const QColor kFailureError(0x87, 0x90, 0x95);
const QColor kLiveBackground(0x11, 0x1a, 0x13);
const QColor kLiveAccent(0x55, 0xd8, 0x6b);
const QColor kLiveText(0xe3, 0xee, 0xe5);
const QColor kWaveBackground(0x25, 0x4d, 0x2c);
const QColor kWaveBars(0x4d, 0xb8, 0x58);
const QColor kWaveText(0xae, 0xb6, 0xb9);

QImage blankCard(QSize size, const QColor &colour)
{
    QImage image(size.expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

QFont fontOfPixels(int pixels, bool bold = false)
{
    QFont font;
    font.setPixelSize(std::max(pixels, 6));
    font.setBold(bold);
    return font;
}

// The card text scales with the card, so a larger tile reads the same.
int scaled(QSize size, int pixelsAt136)
{
    return std::max(1, size.height() * pixelsAt136 / 136);
}

QImage paintCard(const QString &label, const QString *error, QSize size)
{
    QImage image = blankCard(size, kFailureBackground);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const int margin = scaled(size, 10);
    const QRect area = image.rect().adjusted(margin, margin, -margin, -margin);
    painter.setPen(kFailureLabel);
    painter.setFont(fontOfPixels(scaled(size, 22), true));
    if (!error) {
        painter.drawText(area, Qt::AlignCenter, label);
        return image;
    }
    const int labelHeight = scaled(size, 30);
    painter.drawText(QRect(area.left(), area.top(), area.width(), labelHeight), Qt::AlignLeft | Qt::AlignVCenter,
                     label);
    const int wordHeight = scaled(size, 20);
    painter.setPen(kFailureWord);
    painter.setFont(fontOfPixels(scaled(size, 15), true));
    painter.drawText(QRect(area.left(), area.top() + labelHeight, area.width(), wordHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Failed"));
    painter.setPen(kFailureError);
    painter.setFont(fontOfPixels(scaled(size, 11)));
    const QRect errorArea = area.adjusted(0, labelHeight + wordHeight + scaled(size, 4), 0, 0);
    painter.drawText(errorArea, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, *error);
    return image;
}

} // namespace

QString thumbnailCardLabel(const QString &path, PlaylistMediaType mediaType)
{
    switch (mediaType) {
    case PlaylistMediaType::video: return QStringLiteral("VIDEO");
    case PlaylistMediaType::audio: return QStringLiteral("AUDIO");
    case PlaylistMediaType::stillImage: return QStringLiteral("IMAGE");
    case PlaylistMediaType::presentation: return QStringLiteral("PPTX");
    default: break;
    }
    static const QStringList videoSuffixes{"mp4", "mov", "webm", "mkv", "avi", "mxf"};
    static const QStringList audioSuffixes{"wav", "mp3", "flac", "m4a", "aac"};
    static const QStringList imageSuffixes{"png", "jpg", "jpeg", "bmp", "tif", "tiff", "webp", "gif"};
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (videoSuffixes.contains(suffix))
        return QStringLiteral("VIDEO");
    if (audioSuffixes.contains(suffix))
        return QStringLiteral("AUDIO");
    if (imageSuffixes.contains(suffix))
        return QStringLiteral("IMAGE");
    if (suffix == QLatin1String("pptx"))
        return QStringLiteral("PPTX");
    return QStringLiteral("MEDIA");
}

QImage paintPlaceholderCard(const QString &label, QSize size)
{
    return paintCard(label, nullptr, size);
}

QImage paintFailureCard(const QString &label, const QString &error, QSize size)
{
    return paintCard(label, &error, size);
}

QImage paintLiveAudioCard(QSize size)
{
    QImage image = blankCard(size, kLiveBackground);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    // A few level bars, so the card reads as sound at a glance.
    const int bars = 5;
    const int barWidth = scaled(size, 8);
    const int gap = scaled(size, 5);
    const int baseline = image.height() / 2 + scaled(size, 4);
    const int left = (image.width() - (bars * barWidth + (bars - 1) * gap)) / 2;
    static constexpr int heights[bars] = {14, 30, 44, 26, 18};
    for (int i = 0; i < bars; ++i) {
        const int h = scaled(size, heights[i]);
        painter.fillRect(left + i * (barWidth + gap), baseline - h, barWidth, h, kLiveAccent);
    }
    painter.setPen(kLiveText);
    painter.setFont(fontOfPixels(scaled(size, 18), true));
    painter.drawText(QRect(0, baseline + scaled(size, 8), image.width(), scaled(size, 28)), Qt::AlignCenter,
                     QStringLiteral("Live Audio"));
    return image;
}

QImage fitOntoCard(const QImage &picture, QSize size)
{
    QImage card = blankCard(size, Qt::black);
    if (picture.isNull())
        return card;
    const QImage fitted = picture.scaled(card.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&card);
    painter.drawImage(QPoint((card.width() - fitted.width()) / 2, (card.height() - fitted.height()) / 2), fitted);
    return card;
}

QImage paintWaveform(const std::vector<float> &columnPeaks, const QString &caption, QSize size)
{
    QImage image = blankCard(size, kWaveBackground);
    QPainter painter(&image);
    const int middle = image.height() / 2;
    const int reach = std::max(1, middle - scaled(size, 6));
    const int columns = std::min<int>(image.width(), int(columnPeaks.size()));
    for (int x = 0; x < columns; ++x) {
        const float peak = std::clamp(columnPeaks[size_t(x)], 0.0f, 1.0f);
        // Silence still shows as a line, so a quiet passage is told from a gap.
        const int half = std::max(1, int(peak * float(reach) + 0.5f));
        painter.fillRect(x, middle - half, 1, 2 * half, kWaveBars);
    }
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setPen(kWaveText);
    painter.setFont(fontOfPixels(scaled(size, 12)));
    const int margin = scaled(size, 6);
    painter.drawText(image.rect().adjusted(margin, margin / 2, -margin, 0), Qt::AlignLeft | Qt::AlignTop, caption);
    return image;
}

} // namespace tarnix
