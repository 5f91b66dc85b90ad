#include "shell/health_figures.h"

#include "shell/ordered_json.h"

namespace tarnix {

namespace {

QString numberOrNull(const std::optional<qint64> &value)
{
    return value ? QString::number(*value) : QStringLiteral("null");
}

} // namespace

QString healthJson(const HealthFigures &figures)
{
    OrderedJsonObject retained;
    for (auto it = figures.retainedPipelines.cbegin(); it != figures.retainedPipelines.cend(); ++it)
        retained.add(it.key(), it.value());
    return OrderedJsonObject()
        .add(QStringLiteral("uptimeMs"), figures.uptimeMs)
        .addEncoded(QStringLiteral("renders5s"), numberOrNull(figures.renders5s))
        .addEncoded(QStringLiteral("presents5s"), numberOrNull(figures.presents5s))
        .addEncoded(QStringLiteral("largestRenderGapMs"), numberOrNull(figures.largestRenderGapMs))
        .addEncoded(QStringLiteral("mailboxMisses"), numberOrNull(figures.mailboxMisses))
        .addEncoded(QStringLiteral("retainedPipelines"), retained.toString())
        .add(QStringLiteral("logRecordsDropped"), figures.logRecordsDropped)
        .addEncoded(QStringLiteral("rssBytes"), numberOrNull(figures.rssBytes))
        .addEncoded(QStringLiteral("openFds"), numberOrNull(figures.openFds))
        .addEncoded(QStringLiteral("threads"), numberOrNull(figures.threads))
        .add(QStringLiteral("operatorWarnings"), figures.operatorWarnings)
        .toString();
}

} // namespace tarnix
