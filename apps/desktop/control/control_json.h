#pragma once

#include <QJsonValue>
#include <QString>

namespace tarnix {

// The compact JSON text of one value of any kind, scalars included.
QString encodedJsonValue(const QJsonValue &value);

} // namespace tarnix
