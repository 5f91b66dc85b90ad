#include "ui/audio_meter_widget.h"

#include "shell/interface_scale.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnix {

namespace {

constexpr int kSegments = MeterBallistics::kSegments;

// Fast enough that the 80 ms dimming shows as a fade, slow enough to cost
// little; it only runs while the meter is falling.
constexpr int kFallIntervalMs = 20;

struct MeterPalette {
    QColor top;
    QColor middle;
    QColor low;
    QColor unlit;
};

const MeterPalette &paletteFor(AudioMeterWidget::Look look)
{
    static const MeterPalette normal{{240, 25, 36}, {245, 229, 0}, {22, 199, 51}, {23, 25, 26}};
    static const MeterPalette subdued{{192, 80, 80}, {210, 160, 120}, {90, 130, 90}, {85, 85, 85}};
    return look == AudioMeterWidget::Look::Subdued ? subdued : normal;
}

const QColor kBackground(0x10, 0x12, 0x14);
const QColor kClipLit(0x85, 0x25, 0x2b);
const QColor kClipUnlit(0x48, 0x17, 0x1a);

int mix(int from, int to, double amount)
{
    return int(std::lround(from + (to - from) * amount));
}


} // namespace

AudioMeterWidget::AudioMeterWidget(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("audioMeter"));
    m_sinceStart.start();
    m_clock = [this] { return m_sinceStart.elapsed(); };
    m_fallTimer.setObjectName(QStringLiteral("audioMeterFallTimer"));
    m_fallTimer.setParent(this);
    m_fallTimer.setInterval(kFallIntervalMs);
    connect(&m_fallTimer, &QTimer::timeout, this, [this] { continueFall(); });
    setFixedWidth(scaledPixels(64));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void AudioMeterWidget::setClock(Clock clock)
{
    if (clock)
        m_clock = std::move(clock);
}

// Only the segments and the lamp that look different are repainted: a
// meter moving on speech changes a few segments at its top edge, and the
// window then redraws and sends those few rectangles, not the whole meter.
void AudioMeterWidget::repaintChanges(const MeterBallistics &before)
{
    QRegion dirty;
    if (before.clipLit() != m_meter.clipLit())
        dirty += clipLampRect();
    for (int channel = 0; channel < 2; ++channel) {
        const MeterBallistics::Segments &was = before.segments(channel);
        const MeterBallistics::Segments &now = m_meter.segments(channel);
        int first = -1;
        int last = -1;
        for (int i = 0; i < kSegments; ++i) {
            if (was[i] != now[i]) {
                if (first < 0)
                    first = i;
                last = i;
            }
        }
        if (first >= 0)
            dirty += segmentRect(channel, first).united(segmentRect(channel, last));
    }
    if (!dirty.isEmpty())
        update(dirty);
}

bool AudioMeterWidget::setLevels(double leftDb, double rightDb, bool clipped)
{
    m_targetDb = {leftDb, rightDb};
    const MeterBallistics before = m_meter;
    const bool moving = m_meter.setLevels(leftDb, rightDb, clipped, m_clock());
    if (m_meter.changed())
        repaintChanges(before);
    if (!moving)
        m_fallTimer.stop();
    else if (!m_fallTimer.isActive())
        m_fallTimer.start();
    return moving;
}

void AudioMeterWidget::continueFall()
{
    // The last reading still stands as the target; the fall and the clip
    // hold play out between readings, or after the readings stop.
    const MeterBallistics before = m_meter;
    const bool moving = m_meter.setLevels(m_targetDb[0], m_targetDb[1], false, m_clock());
    if (m_meter.changed())
        repaintChanges(before);
    if (!moving)
        m_fallTimer.stop();
}

void AudioMeterWidget::showMeter(const MeterBallistics &meter)
{
    m_fallTimer.stop();
    const MeterBallistics before = m_meter;
    m_meter = meter;
    repaintChanges(before);
}

void AudioMeterWidget::reset()
{
    m_fallTimer.stop();
    m_targetDb = {MeterBallistics::kFloorDb, MeterBallistics::kFloorDb};
    const MeterBallistics before = m_meter;
    if (m_meter.reset())
        repaintChanges(before);
}

void AudioMeterWidget::setCompact(bool compact)
{
    if (m_compact == compact)
        return;
    m_compact = compact;
    setFixedWidth(scaledPixels(compact ? 25 : 64));
    m_scale = QPixmap();
    update();
}

void AudioMeterWidget::setShortScale(bool shortScale)
{
    if (m_shortScale == shortScale)
        return;
    m_shortScale = shortScale;
    m_scale = QPixmap();
    update();
}

void AudioMeterWidget::setLook(Look look)
{
    if (m_look == look)
        return;
    m_look = look;
    m_scale = QPixmap();
    update();
}

QSize AudioMeterWidget::sizeHint() const
{
    return QSize(scaledPixels(m_compact ? 25 : 64), scaledPixels(220));
}

AudioMeterWidget::Layout AudioMeterWidget::layout() const
{
    const int margin = scaledPixels(m_compact ? 2 : 3);
    const int lampHeight = scaledPixels(6);
    const int gap = scaledPixels(3);
    Layout result;
    result.lamp = QRect(margin, margin, std::max(1, width() - 2 * margin), lampHeight);
    const int barsTop = result.lamp.bottom() + 1 + gap;
    const int barsHeight = std::max(kSegments, height() - margin - barsTop);
    const int labelWidth = m_compact ? 0 : scaledPixels(22);
    const int columnGap = m_compact ? scaledPixels(2) : 0;
    result.barWidth = std::max(1, (width() - 2 * margin - labelWidth - columnGap) / 2);
    result.bars = QRect(margin, barsTop, width() - 2 * margin, barsHeight);
    if (!m_compact)
        result.labels = QRect(margin + result.barWidth, barsTop, labelWidth, barsHeight);
    return result;
}

QRect AudioMeterWidget::segmentRect(int channel, int index) const
{
    const Layout l = layout();
    const int height = l.bars.height();
    const int top = l.bars.top() + int(std::lround(double(height) * index / kSegments));
    const int bottom = l.bars.top() + int(std::lround(double(height) * (index + 1) / kSegments));
    // One pixel of background between segments reads as the hairline of a
    // hardware meter; a meter too short for it draws solid columns.
    const int hairline = bottom - top > 1 ? 1 : 0;
    const int x = channel == 0 ? l.bars.left() : l.bars.right() + 1 - l.barWidth;
    return QRect(x, top, l.barWidth, std::max(1, bottom - top - hairline));
}

QRect AudioMeterWidget::clipLampRect() const
{
    return layout().lamp;
}

QColor AudioMeterWidget::segmentColour(Look look, int index, double brightness)
{
    const MeterPalette &palette = paletteFor(look);
    const double db = -index * 60.0 / (kSegments - 1);
    const QColor &lit = db >= -9.0 ? palette.top : db >= -20.0 ? palette.middle : palette.low;
    const double amount = std::clamp(brightness, 0.0, 1.0);
    return QColor(mix(palette.unlit.red(), lit.red(), amount), mix(palette.unlit.green(), lit.green(), amount),
                  mix(palette.unlit.blue(), lit.blue(), amount));
}

void AudioMeterWidget::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    const qreal ratio = devicePixelRatioF();
    if (m_scale.isNull() || m_scale.size() != size() * ratio)
        m_scale = paintScale();
    const QRect exposed = event->rect();
    painter.drawPixmap(exposed, m_scale, QRectF(QPointF(exposed.topLeft()) * ratio, QSizeF(exposed.size()) * ratio));
    if (clipLampRect().intersects(exposed))
        painter.fillRect(clipLampRect(), m_meter.clipLit() ? kClipLit : kClipUnlit);
    for (int channel = 0; channel < 2; ++channel) {
        const MeterBallistics::Segments &segments = m_meter.segments(channel);
        for (int i = 0; i < kSegments; ++i) {
            const QRect segment = segmentRect(channel, i);
            if (segment.intersects(exposed))
                painter.fillRect(segment, segmentColour(m_look, i, segments[i]));
        }
    }
}

void AudioMeterWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        m_scale = QPixmap();
    QWidget::changeEvent(event);
}

// What never moves: the background and the dB scale between the columns,
// drawn once per size, font and look rather than on every repaint.
QPixmap AudioMeterWidget::paintScale() const
{
    const qreal ratio = devicePixelRatioF();
    QPixmap scale(size() * ratio);
    scale.setDevicePixelRatio(ratio);
    scale.fill(kBackground);
    const Layout l = layout();
    if (l.labels.isEmpty())
        return scale;
    QPainter painter(&scale);
    static const int kFullScale[] = {0, -6, -12, -20, -30, -40, -50, -60};
    static const int kShortScale[] = {0, -20, -40, -60};
    QFont labelFont = font();
    labelFont.setPixelSize(scaledPixels(8));
    painter.setFont(labelFont);
    painter.setPen(QColor(150, 154, 158));
    const int labelHeight = scaledPixels(10);
    auto drawLabel = [&](int db) {
        const int y = l.labels.top() + l.labels.height()
                      - int(std::lround(l.labels.height() * (std::clamp(db, -60, 0) + 60) / 60.0));
        QRect text(l.labels.left(), y - labelHeight / 2, l.labels.width(), labelHeight);
        // Keep the end labels whole inside the widget.
        text.moveTop(std::clamp(text.top(), 0, std::max(0, height() - labelHeight)));
        painter.drawText(text, Qt::AlignCenter, db == 0 ? QStringLiteral("0") : QStringLiteral("\u2212%1").arg(-db));
    };
    if (m_shortScale) {
        for (int db : kShortScale)
            drawLabel(db);
    } else {
        for (int db : kFullScale)
            drawLabel(db);
    }
    return scale;
}

} // namespace tarnix
