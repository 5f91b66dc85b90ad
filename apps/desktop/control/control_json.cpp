#include "control/control_json.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace tarnix {

QString encodedJsonValue(const QJsonValue &value)
{
    // QJsonDocument only holds arrays and objects: wrap and strip the brackets.
    const QByteArray wrapped = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(wrapped.mid(1, wrapped.size() - 2));
}

} // namespace tarnix
