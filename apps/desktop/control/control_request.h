#pragma once

#include "control/controller_operations.h"

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QVariant>

namespace tarnix {

// One line of the control socket, decoded. Decoding only turns the text into
// an action and typed values; whether the values fit the action is the
// registry's check, so a wrong type comes back as InvalidArguments.
struct ControlRequest {
    enum class Kind { Invoke, StateQuery, Query, Command, Invalid };
    Kind kind = Kind::Invalid;
    ControllerOperations::Action action = ControllerOperations::Count;
    QList<QVariant> arguments;
    // For Query: its name (every query but "state", which the state
    // registry answers). For Command: its name and the whole request
    // object, whose other members are the command's own to check.
    QString query;
    QString command;
    QJsonObject commandRequest;
    QString error;  // for Invalid: what was wrong, for the error line
};

// Decodes one line (without its line feed). Forms:
//   {"action":"<Action name>","args":[<argument>...]}   ("args" optional)
//   {"query":"state"}, {"query":"<name>"}
//   {"command":"<name>", <the command's members>...}
ControlRequest parseControlRequest(const QByteArray &line);

// Decodes one typed argument: {"int":3}, {"int64":7} or {"int64":"7"},
// {"uint64":"18446744073709551614"}, {"double":0.5}, {"string":"x"},
// {"strings":["a","b"]}, {"bool":true}, {"json":{...}},
// {"enum":"PlaylistEndMode","value":"next"}. Returns an invalid QVariant and
// a text when the shape is unknown or the value does not fit.
QVariant decodeControlArgument(const QJsonValue &argument, QString *error);

// The answer lines, each one compact JSON object without the line feed.
QString controlInvokedAnswer(quint64 requestId, ControllerOperations::Status status);
QString controlErrorAnswer(const QString &text);
QString controlOkAnswer();

} // namespace tarnix
