#include "playlist/json_values.h"

#include <cmath>

namespace tarnix {

std::optional<quint64> itemIdFromText(const QString &text)
{
    bool ok = false;
    const quint64 value = text.toULongLong(&ok, 10);
    if (!ok)
        return std::nullopt;
    return value;
}

std::optional<qint64> jsonInteger(const QJsonValue &value, qint64 low, qint64 high)
{
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    if (!std::isfinite(number) || number != std::trunc(number))
        return std::nullopt;
    if (number < static_cast<double>(low) || number > static_cast<double>(high))
        return std::nullopt;
    // Within +-2^63 after the bounds test; integers Qt kept exact stay exact.
    const qint64 exact = value.toInteger(static_cast<qint64>(number));
    return exact >= low && exact <= high ? exact : static_cast<qint64>(number);
}

} // namespace tarnix
