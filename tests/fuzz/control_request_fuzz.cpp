// Fuzz entry for one line of the control socket: the request decoder and
// the typed argument decoder. Besides "no crash, no hang, no leak" it checks
// the promises the socket makes to its peer: a request is either decoded or
// refused with a text, a decoded invocation carries only valid values, and
// the answer to any line is one compact JSON object on one line.

#include "control/control_request.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void fail(const char *why)
{
    std::fprintf(stderr, "%s\n", why);
    std::abort();
}

void checkAnswerLine(const QString &answer)
{
    const QByteArray bytes = answer.toUtf8();
    if (bytes.contains('\n') || bytes.contains('\r'))
        fail("an answer spans more than one line");
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        fail("an answer is not one JSON object");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace tarnix;
    const QByteArray line = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const ControlRequest request = parseControlRequest(line);
    switch (request.kind) {
    case ControlRequest::Kind::Invalid:
        if (request.error.isEmpty())
            fail("a refused request has no text");
        checkAnswerLine(controlErrorAnswer(request.error));
        break;
    case ControlRequest::Kind::Invoke:
        if (request.action < 0 || request.action >= ControllerOperations::Count)
            fail("an invocation names no action");
        for (const QVariant &argument : request.arguments)
            if (!argument.isValid())
                fail("an invocation carries an invalid value");
        checkAnswerLine(controlInvokedAnswer(1, ControllerOperations::Status::Invoked));
        break;
    case ControlRequest::Kind::Query:
    case ControlRequest::Kind::StateQuery:
    case ControlRequest::Kind::Command:
        if (!request.error.isEmpty())
            fail("an accepted request carries an error");
        break;
    }

    // Every argument shape on its own, when the line is a JSON value.
    const QJsonDocument document = QJsonDocument::fromJson(line);
    if (document.isObject()) {
        QString error;
        const QVariant value = decodeControlArgument(QJsonValue(document.object()), &error);
        if (value.isValid() == !error.isEmpty())
            fail("an argument is both decoded and refused, or neither");
        if (!value.isValid())
            checkAnswerLine(controlErrorAnswer(error));
    }
    return 0;
}
