#include "shell/interface_scale.h"

#include <QApplication>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <optional>

namespace tarnix {

namespace {

std::atomic<double> g_scale{1.0};
std::atomic<int> g_textStep{0};

// The application font as the platform gave it, before any scaling; every
// later scaling starts again from it.
std::optional<QFont> &unscaledApplicationFont()
{
    static std::optional<QFont> font;
    return font;
}

} // namespace

double uiScale(const QRect &geometry, const QRect &available)
{
    if (geometry.isEmpty() || available.isEmpty())
        return 1.0;
    const double screen = std::min(geometry.width() / 1920.0, geometry.height() / 1080.0);
    const double area = std::min(available.width() / 1886.0, available.height() / 805.0);
    return std::min(screen, area);
}

double interfaceScale()
{
    return g_scale.load(std::memory_order_relaxed);
}

void setUiScale(double scale)
{
    g_scale.store(std::isfinite(scale) && scale > 0.0 ? scale : 1.0, std::memory_order_relaxed);
}

int textSizeStep()
{
    return g_textStep.load(std::memory_order_relaxed);
}

void setTextSizeStep(int step)
{
    g_textStep.store(std::clamp(step, 0, 2), std::memory_order_relaxed);
}

double textSizeFactor()
{
    return textSizeStep() * 0.2 + 1.0;
}

int scaledBy(double value, double factor)
{
    const double product = value * factor;
    // std::round rounds half away from zero.
    const int rounded = int(std::round(product));
    if (value > 0 && rounded < 1)
        return 1;
    return rounded;
}

int scaled(int pixels)
{
    return scaledBy(pixels, interfaceScale());
}

QFont scaledFont(const QFont &unscaled)
{
    QFont font = unscaled;
    if (unscaled.pointSizeF() > 0)
        font.setPointSizeF(unscaled.pointSizeF() * interfaceScale() * textSizeFactor());
    else if (unscaled.pixelSize() > 0)
        font.setPixelSize(scaled(unscaled.pixelSize()));
    return font;
}

void applyScaledApplicationFont()
{
    std::optional<QFont> &unscaled = unscaledApplicationFont();
    if (!unscaled)
        unscaled = QApplication::font();
    QApplication::setFont(scaledFont(*unscaled));
}

void applyScaledMenuFonts()
{
    const QFont font = QApplication::font();
    QApplication::setFont(font, "QMenuBar");
    QApplication::setFont(font, "QMenu");
}

} // namespace tarnix
