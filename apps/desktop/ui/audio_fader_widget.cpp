#include "ui/audio_fader_widget.h"

#include "shell/interface_scale.h"
#include "shell/localized_text.h"
#include "ui/audio_fader_law.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <cmath>

namespace tarnix {

namespace {

// The cap holds 0 dB until it is pulled further than this...
constexpr int kStickPixels = 4;
// ...and snaps to 0 dB when it passes this close.
constexpr int kSnapPixels = 2;

// Above this interface scale the cap grows taller so it stays easy to grab.
constexpr double kLargeScale = 1.5;

struct FaderTexts {
    QString name;
    QString description;
    QString toolTip;
};

FaderTexts faderTexts(AudioFaderWidget::Kind kind, const QString &db)
{
    switch (kind) {
    case AudioFaderWidget::Kind::Master:
        return {LocalizedText(QStringLiteral("audio_fader.master_name"), {}, QStringLiteral("ON AIR master volume")).toString(),
                LocalizedText(QStringLiteral("audio_fader.master_description"), {db},
                              QStringLiteral("ON AIR master volume: %1 dB")).toString(),
                LocalizedText(QStringLiteral("audio_fader.master_tooltip"), {db},
                              QStringLiteral("ON AIR master volume: %1 dB\nDouble-click to reset to 0 dB")).toString()};
    case AudioFaderWidget::Kind::Item:
        return {LocalizedText(QStringLiteral("audio_fader.item_name"), {}, QStringLiteral("ON AIR item volume")).toString(),
                LocalizedText(QStringLiteral("audio_fader.item_description"), {db},
                              QStringLiteral("ON AIR item volume: %1 dB")).toString(),
                LocalizedText(QStringLiteral("audio_fader.item_tooltip"), {db},
                              QStringLiteral("ON AIR item volume: %1 dB\nDouble-click to reset to 0 dB")).toString()};
    case AudioFaderWidget::Kind::Nominal:
        break;
    }
    return {LocalizedText(QStringLiteral("audio_fader.nominal_name"), {}, QStringLiteral("Nominal volume")).toString(),
            LocalizedText(QStringLiteral("audio_fader.nominal_description"), {db},
                          QStringLiteral("Nominal volume of the item: %1 dB")).toString(),
            LocalizedText(QStringLiteral("audio_fader.nominal_tooltip"), {db},
                          QStringLiteral("Nominal volume: %1 dB\nDouble-click to reset to 0 dB")).toString()};
}

// The fill colour tells the faders apart at a glance: red for what goes to
// air as a whole, amber for the item on air, green for a stored setting.
QColor accentColour(AudioFaderWidget::Kind kind)
{
    switch (kind) {
    case AudioFaderWidget::Kind::Master:
        return QColor(214, 70, 60);
    case AudioFaderWidget::Kind::Item:
        return QColor(224, 160, 48);
    case AudioFaderWidget::Kind::Nominal:
        break;
    }
    return QColor(63, 174, 106);
}

struct ScaleMark {
    int value;
    const char16_t *label;
};

constexpr std::array<ScaleMark, 7> kScaleMarks{{
    {kFaderOffValue, u"\u2212\u221e"},
    {-400, u"\u221240"},
    {-200, u"\u221220"},
    {-100, u"\u221210"},
    {-50, u"\u22125"},
    {0, u"0"},
    {60, u"+6"},
}};

} // namespace

AudioFaderWidget::AudioFaderWidget(Kind kind, QWidget *parent)
    : QSlider(Qt::Vertical, parent)
    , m_kind(kind)
{
    setRange(kFaderOffValue, kFaderMaxValue);
    setSingleStep(10);
    setPageStep(50);
    setTracking(true);
    setValue(0);
    setFocusPolicy(Qt::WheelFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    connect(this, &QAbstractSlider::valueChanged, this, [this] {
        refreshTexts();
        update();
    });
    connect(this, &QAbstractSlider::actionTriggered, this, [this] { takeSliderAction(); });
    refreshTexts();
}

void AudioFaderWidget::setKind(Kind kind)
{
    if (m_kind == kind)
        return;
    m_kind = kind;
    refreshTexts();
    update();
}

void AudioFaderWidget::setCompact(bool compact)
{
    if (m_compact == compact)
        return;
    m_compact = compact;
    updateGeometry();
    update();
}

double AudioFaderWidget::linearGain() const
{
    return faderValueToGain(value());
}

void AudioFaderWidget::setLinearGain(double gain)
{
    setValue(faderGainToValue(gain, minimum(), maximum()));
}

void AudioFaderWidget::setValueHandler(ValueHandler handler)
{
    m_valueHandler = std::move(handler);
}

QString AudioFaderWidget::dbText(int value)
{
    return faderDbText(value);
}

QRect AudioFaderWidget::grooveRect() const
{
    const int top = scaledPixels(m_compact ? 22 : 43);
    const int bottom = std::max(height() - scaledPixels(55), top + 1);
    return QRect(scaledPixels(22) - scaledPixels(2), top, scaledPixels(5), bottom - top + 1);
}

QRect AudioFaderWidget::capRect() const
{
    const QRect groove = grooveRect();
    const int width = scaledPixels(20);
    const int height = scaledPixels(interfaceScale() >= kLargeScale ? 40 : 34);
    const int row = rowForValue(value());
    return QRect(groove.center().x() - width / 2, row - height / 2, width, height);
}

int AudioFaderWidget::rowForValue(int value) const
{
    const QRect groove = grooveRect();
    return groove.bottom() - int(std::lround((groove.height() - 1) * faderValueToPosition(value)));
}

QSize AudioFaderWidget::sizeHint() const
{
    return QSize(scaledPixels(60), scaledPixels(m_compact ? 220 : 300));
}

QSize AudioFaderWidget::minimumSizeHint() const
{
    return QSize(scaledPixels(60), scaledPixels(m_compact ? 140 : 170));
}

void AudioFaderWidget::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QSlider::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    m_dragging = true;
    m_stickToZero = value() == 0;
    setSliderDown(true);
    const QPoint pos = event->position().toPoint();
    if (capRect().contains(pos)) {
        // Grabbing the cap keeps it where it is; the drag follows the hand
        // from the point where the cap was taken.
        m_dragOffset = pos.y() - rowForValue(value());
    } else {
        m_dragOffset = 0;
        moveCapTo(pos.y());
    }
    event->accept();
}

void AudioFaderWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging) {
        QSlider::mouseMoveEvent(event);
        return;
    }
    moveCapTo(int(event->position().y()) - m_dragOffset);
    event->accept();
}

void AudioFaderWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QSlider::mouseReleaseEvent(event);
        return;
    }
    m_dragging = false;
    setSliderDown(false);
    event->accept();
}

void AudioFaderWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QSlider::mouseDoubleClickEvent(event);
        return;
    }
    m_dragging = false;
    setSliderDown(false);
    m_stickToZero = true;
    requestValue(0);
    event->accept();
}

void AudioFaderWidget::wheelEvent(QWheelEvent *event)
{
    // A wheel turned over a fader on its way elsewhere must not change the
    // volume on air; taking the event also keeps a parent from scrolling.
    event->accept();
}

void AudioFaderWidget::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        // Volume steps are operations of their own (with their log line),
        // bound by the window; the focused fader must not step by itself.
        event->accept();
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        event->ignore();
        return;
    default:
        QSlider::keyPressEvent(event);
    }
}

void AudioFaderWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        refreshTexts();
    QSlider::changeEvent(event);
}

void AudioFaderWidget::moveCapTo(int y)
{
    const QRect groove = grooveRect();
    y = std::clamp(y, groove.top(), groove.bottom());
    const int distance = std::abs(y - rowForValue(0));
    if (m_stickToZero) {
        if (distance <= scaledPixels(kStickPixels))
            return;
        m_stickToZero = false;
    }
    if (distance <= scaledPixels(kSnapPixels)) {
        m_stickToZero = true;
        if (value() != 0)
            requestValue(0);
        return;
    }
    const double position = double(groove.bottom() - y) / std::max(groove.height() - 1, 1);
    const int wanted = faderPositionToValue(position);
    if (wanted != value())
        requestValue(wanted);
}

void AudioFaderWidget::requestValue(int wanted)
{
    wanted = std::clamp(wanted, minimum(), maximum());
    if (m_valueHandler)
        m_valueHandler(wanted);
    else
        setValue(wanted);
}

void AudioFaderWidget::takeSliderAction()
{
    // QAbstractSlider has already moved its position for the action (Home,
    // End, ...); the value only changes if the owner accepts it.
    const int wanted = sliderPosition();
    if (wanted == value())
        return;
    setSliderPosition(value());
    requestValue(wanted);
}

void AudioFaderWidget::refreshTexts()
{
    const FaderTexts texts = faderTexts(m_kind, dbText(value()));
    setAccessibleName(texts.name);
    setAccessibleDescription(texts.description);
    setToolTip(texts.toolTip);
}

void AudioFaderWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QRect groove = grooveRect();
    const QRect cap = capRect();
    const int capRow = rowForValue(value());
    const QColor accent = isEnabled() ? accentColour(m_kind) : QColor(90, 90, 90);

    QFont labelFont = font();
    labelFont.setPixelSize(scaledPixels(9));
    painter.setFont(labelFont);

    // Readout above the travel.
    QFont readoutFont = font();
    readoutFont.setPixelSize(scaledPixels(m_compact ? 9 : 11));
    readoutFont.setBold(true);
    painter.setFont(readoutFont);
    // Texts and the unity mark in the skin's text colour; the other marks
    // halfway to the ground, so they recede on a dark or a light panel.
    const QColor text = palette().color(QPalette::WindowText);
    const QColor ground = palette().color(QPalette::Window);
    const QColor quietMark = QColor::fromRgbF((text.redF() + ground.redF()) / 2, (text.greenF() + ground.greenF()) / 2,
                                              (text.blueF() + ground.blueF()) / 2);
    painter.setPen(text);
    const QRect readout(0, 0, width(), groove.top() - scaledPixels(m_compact ? 6 : 14));
    // One decimal is what an operator reads; the tool tip has the full text.
    const QString readoutText = value() <= kFaderOffValue
                                    ? dbText(value())
                                    : QString::number(value() / 10.0, 'f', 1).replace(QLatin1Char('-'), QChar(0x2212));
    painter.drawText(readout, Qt::AlignCenter, readoutText);
    painter.setFont(labelFont);

    // Scale ticks left of the cap's path, labels right of it, so a label's
    // minus sign never reads as a second tick.
    const int tickRight = cap.left() - scaledPixels(1);
    const int tickLength = scaledPixels(5);
    const int labelLeft = cap.right() + scaledPixels(4);
    for (const ScaleMark &mark : kScaleMarks) {
        const int row = rowForValue(mark.value);
        const bool unity = mark.value == 0;
        painter.setPen(QPen(unity ? text : quietMark, unity ? 1.5 : 1.0));
        painter.drawLine(QPointF(tickRight - tickLength, row + 0.5), QPointF(tickRight, row + 0.5));
        const QRect labelRect(labelLeft, row - scaledPixels(7), width() - labelLeft, scaledPixels(14));
        painter.drawText(labelRect, Qt::AlignLeft | Qt::AlignVCenter, QString::fromUtf16(mark.label));
    }

    // The slot, and the level filled from the bottom up to the cap.
    const QRectF slot = QRectF(groove).adjusted(-1.5, -1.5, 1.5, 1.5);
    painter.setPen(QPen(QColor(52, 56, 60), 1.0));
    painter.setBrush(QColor(6, 7, 8));
    painter.drawRoundedRect(slot, 2.0, 2.0);
    if (value() > minimum()) {
        QColor fill = accent;
        fill.setAlpha(170);
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRect(QRectF(groove.left(), capRow, groove.width(), groove.bottom() + 1 - capRow));
    }

    // The cap: a dark moulded block with a white index line at its centre.
    QLinearGradient body(cap.topLeft(), cap.bottomLeft());
    body.setColorAt(0.0, QColor(88, 92, 98));
    body.setColorAt(0.45, QColor(46, 49, 53));
    body.setColorAt(0.55, QColor(38, 40, 44));
    body.setColorAt(1.0, QColor(24, 26, 28));
    painter.setPen(QPen(hasFocus() ? accent : QColor(12, 13, 14), 1.0));
    painter.setBrush(body);
    painter.drawRoundedRect(QRectF(cap).adjusted(0.5, 0.5, -0.5, -0.5), 2.5, 2.5);
    painter.setPen(QPen(QColor(20, 21, 23), 1.0));
    const int grip = std::max(3, cap.height() / 7);
    for (int offset : {-2 * grip, -grip, grip, 2 * grip})
        painter.drawLine(QPointF(cap.left() + 3, capRow + offset + 0.5), QPointF(cap.right() - 2, capRow + offset + 0.5));
    painter.setPen(QPen(QColor(245, 245, 245), std::max(1.5, scaledPixels(2) * 1.0)));
    painter.drawLine(QPointF(cap.left() + 2, capRow + 0.5), QPointF(cap.right() - 1, capRow + 0.5));
}

} // namespace tarnix
