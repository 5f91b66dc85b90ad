#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>

// Small conversions shared by the document and macro readers.
namespace tarnix {

// An item id as the documents spell it: whatever the unsigned decimal
// conversion accepts ("007" is 7). Zero is returned as 0, not refused.
std::optional<quint64> itemIdFromText(const QString &text);

// A JSON number that is finite, whole and inside [low, high]. 1.5 is no
// integer; a missing value or a string is none either.
std::optional<qint64> jsonInteger(const QJsonValue &value, qint64 low, qint64 high);

} // namespace tarnix
