#pragma once

#include <QSlider>

#include <functional>

namespace tarnix {

// A vertical volume fader in tenths of a dB (-960 = off .. 60 = +6 dB), drawn
// as a studio console fader. It only moves when the operator means it: the
// wheel is ignored, a grab of the cap never jumps, and 0 dB holds the cap
// until it is pulled clearly away. With a value handler installed every value
// the operator asks for goes to the owner first, which may refuse it.
class AudioFaderWidget : public QSlider
{
    Q_OBJECT

public:
    enum class Kind { Master = 0, Item = 1, Nominal = 2 };

    using ValueHandler = std::function<void(int)>;

    explicit AudioFaderWidget(Kind kind = Kind::Item, QWidget *parent = nullptr);

    Kind kind() const { return m_kind; }
    void setKind(Kind kind);
    bool isCompact() const { return m_compact; }
    void setCompact(bool compact);

    double linearGain() const;
    // For automation such as manual fades: sets the value directly.
    void setLinearGain(double gain);

    // Receives every value the operator asks for instead of setValue; the
    // owner calls setValue to accept it. An empty handler restores direct
    // setting.
    void setValueHandler(ValueHandler handler);

    static QString dbText(int value);

    // Geometry, in widget pixels, used by painting and mouse handling alike.
    QRect grooveRect() const;
    QRect capRect() const;
    int rowForValue(int value) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void moveCapTo(int y);
    void requestValue(int value);
    void takeSliderAction();
    void refreshTexts();

    Kind m_kind = Kind::Item;
    bool m_compact = false;
    bool m_dragging = false;
    bool m_stickToZero = false;
    int m_dragOffset = 0;
    ValueHandler m_valueHandler;
};

} // namespace tarnix
