// Fuzz entry for the control socket's typed argument decoder on its own, so
// that every input is an argument rather than a whole request. Besides "no
// crash, no hang, no leak" it checks that an argument is either decoded or
// refused with a text, and that a decoded number, written back in the form a
// peer would send it and decoded again, is the same value: no digit is lost
// between the socket's text and the operation.

#include "control/control_request.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void fail(const char *why)
{
    std::fprintf(stderr, "%s\n", why);
    std::abort();
}

// The argument as a peer writes it, or an empty object for the kinds that
// are not numbers.
QJsonObject writtenBack(const QVariant &value)
{
    switch (value.metaType().id()) {
    case QMetaType::Int: return {{QStringLiteral("int"), value.toInt()}};
    case QMetaType::LongLong: return {{QStringLiteral("int64"), QString::number(value.toLongLong())}};
    case QMetaType::ULongLong: return {{QStringLiteral("uint64"), QString::number(value.toULongLong())}};
    case QMetaType::Double: return {{QStringLiteral("double"), value.toDouble()}};
    case QMetaType::Bool: return {{QStringLiteral("bool"), value.toBool()}};
    case QMetaType::QStringList: return {{QStringLiteral("strings"), QJsonArray::fromStringList(value.toStringList())}};
    default: return {};
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace tarnix;
    const QByteArray text = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject())
        return 0;
    QString error;
    const QVariant value = decodeControlArgument(QJsonValue(document.object()), &error);
    if (value.isValid() == !error.isEmpty())
        fail("an argument is both decoded and refused, or neither");
    if (!value.isValid())
        return 0;

    const QJsonObject again = writtenBack(value);
    if (again.isEmpty())
        return 0;
    const QByteArray line = QJsonDocument(again).toJson(QJsonDocument::Compact);
    QString againError;
    const QVariant decodedAgain = decodeControlArgument(QJsonValue(QJsonDocument::fromJson(line).object()), &againError);
    if (!decodedAgain.isValid())
        fail("a decoded argument, written back, is refused");
    if (decodedAgain.metaType() != value.metaType() || decodedAgain != value)
        fail("a decoded argument, written back, decodes to another value");
    return 0;
}
