#include "control/controller_operations.h"

#include "playlist/playlist_enums.h"
#include "shell/log_categories.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QMetaEnum>
#include <QStringList>
#include <QTimer>

#include <array>
#include <atomic>
#include <exception>

namespace tarnix {

namespace {

template <typename Value>
QMetaType typeOf()
{
    return QMetaType::fromType<Value>();
}

// Declared argument types, indexed by action number.
const std::array<QList<QMetaType>, ControllerOperations::Count> &argumentTable()
{
    static const std::array<QList<QMetaType>, ControllerOperations::Count> table = {{
        {},  // 0 AddFilesDialog
        {typeOf<QStringList>()},  // 1 AddFiles
        {},  // 2 Exit
        {},  // 3 TakeSelectedOnAir
        {},  // 4 OffAir
        {},  // 5 ProgramPlay
        {},  // 6 ProgramPause
        {},  // 7 ProgramTogglePlayback
        {},  // 8 ToggleFtb
        {},  // 9 ToggleDsk
        {},  // 10 DskPlay
        {},  // 11 DskPause
        {},  // 12 DocumentNext
        {},  // 13 DocumentPrevious
        {typeOf<qint64>()},  // 14 ProgramSeek
        {typeOf<double>()},  // 15 ProgramPlaybackRate
        {typeOf<bool>()},  // 16 MasterMute
        {},  // 17 EditLoadSelected
        {},  // 18 EditPlay
        {},  // 19 EditPause
        {},  // 20 EditStop
        {typeOf<qint64>()},  // 21 EditSeek
        {typeOf<int>()},  // 22 EditStepFrames
        {},  // 23 EditJumpStart
        {},  // 24 EditJumpIn
        {},  // 25 EditJumpOut
        {},  // 26 EditJumpEnd
        {},  // 27 EditScanBackward
        {},  // 28 EditScanForward
        {},  // 29 EditScanStop
        {},  // 30 EditSetIn
        {},  // 31 EditSetOut
        {typeOf<qint64>()},  // 32 EditInTime
        {typeOf<qint64>()},  // 33 EditOutTime
        {typeOf<PlaylistStartMode>()},  // 34 EditStartMode
        {typeOf<PlaylistEndMode>()},  // 35 EditEndMode
        {typeOf<quint64>()},  // 36 EditGoto
        {typeOf<int>(), typeOf<PlaylistRepeatEndMode>()},  // 37 EditRepeat
        {typeOf<bool>(), typeOf<qint64>()},  // 38 EditFadeIn
        {typeOf<bool>(), typeOf<qint64>()},  // 39 EditFadeOut
        {typeOf<bool>(), typeOf<qint64>()},  // 40 EditEndCrossfade
        {typeOf<int>()},  // 41 SetEditVolume
        {typeOf<int>()},  // 42 SetItemVolume
        {typeOf<int>()},  // 43 SetMasterVolume
        {typeOf<int>()},  // 44 AdjustEditVolume
        {typeOf<int>()},  // 45 AdjustItemVolume
        {typeOf<int>()},  // 46 AdjustMasterVolume
        {},  // 47 ResetEditVolume
        {},  // 48 ResetItemVolume
        {},  // 49 ResetMasterVolume
        {},  // 50 ItemFadeIn
        {},  // 51 ItemFadeOut
        {},  // 52 MasterFadeIn
        {},  // 53 MasterFadeOut
        {typeOf<int>()},  // 54 ActivatePlaylist
        {},  // 55 CreatePlaylist
        {typeOf<quint64>()},  // 56 SelectItem
        {typeOf<int>()},  // 57 SelectItemNumber
        {typeOf<quint64>(), typeOf<int>()},  // 58 MoveItem
        {typeOf<quint64>(), typeOf<int>()},  // 59 MoveItemToRow
        {typeOf<quint64>(), typeOf<int>(), typeOf<int>(), typeOf<bool>()},  // 60 TransferItem
        {typeOf<quint64>()},  // 61 RemoveItem
        {typeOf<PlaylistBulkOperation>()},  // 62 PlaylistBulk
        {},  // 63 CopySelectedState
        {},  // 64 PasteSelectedState
        {typeOf<quint64>()},  // 65 CopyItemState
        {typeOf<quint64>()},  // 66 PasteItemState
        {},  // 67 BgmPlay
        {},  // 68 BgmPause
        {},  // 69 BgmStop
        {typeOf<qint64>()},  // 70 BgmFadeIn
        {typeOf<qint64>()},  // 71 BgmFadeOut
        {typeOf<int>(), typeOf<QString>()},  // 72 RenamePlaylist
        {typeOf<quint64>(), typeOf<QString>()},  // 73 SetItemDisplayName
        {typeOf<quint64>(), typeOf<PlaylistItemColor>()},  // 74 SetItemColor
        {typeOf<quint64>(), typeOf<bool>()},  // 75 SetItemSeparatorBelow
        {typeOf<quint64>(), typeOf<PlaylistStartMode>()},  // 76 SetItemStartMode
        {typeOf<quint64>(), typeOf<PlaylistEndMode>()},  // 77 SetItemEndMode
        {typeOf<quint64>(), typeOf<bool>()},  // 78 SetItemFadeInEnabled
        {typeOf<quint64>(), typeOf<bool>()},  // 79 SetItemFadeOutEnabled
        {typeOf<quint64>(), typeOf<bool>()},  // 80 SetItemEndCrossfadeEnabled
        {},  // 81 EditToggleStartMode
        {},  // 82 EditToggleFadeOut
        {},  // 83 EditReset
        {typeOf<int>()},  // 84 SetBgmVolume
        {typeOf<int>()},  // 85 AdjustBgmVolume
        {},  // 86 ResetBgmVolume
        {typeOf<quint64>(), typeOf<quint64>()},  // 87 MacroCue
        {typeOf<quint64>(), typeOf<quint64>(), typeOf<bool>(), typeOf<bool>(), typeOf<qint64>()},  // 88 MacroTake
        {},  // 89 CancelMacroRequests
        {typeOf<quint64>(), typeOf<QJsonObject>()},  // 90 MacroItemSettings
        {typeOf<QString>(), typeOf<double>()},  // 91 MacroRuntimeSetting
        {typeOf<quint64>(), typeOf<QString>()},  // 92 MacroTransport
        {},  // 93 NextOutputDisplay
        {},  // 94 PreviewCapture
        {},  // 95 ProgramCapture
        {},  // 96 TogglePfl
        {},  // 97 OperatorTimerStart
        {},  // 98 OperatorTimerPause
        {},  // 99 OperatorTimerReset
        {},  // 100 OperatorTimerSettings
        {},  // 101 OpenNominalEq
        {},  // 102 OpenItemEq
        {},  // 103 OpenMasterEq
        {},  // 104 OpenSettings
        {},  // 105 RemoveSelectedItem
        {typeOf<int>()},  // 106 SelectRelativeItem
        {},  // 107 BgmFadeInConfigured
        {},  // 108 BgmFadeOutConfigured
    }};
    return table;
}

std::atomic<quint64> operationCounter{0};

QString printedArguments(const QList<QVariant> &arguments)
{
    QString text;
    QDebug(&text).nospace() << arguments;
    return text;
}

} // namespace

struct ControllerOperations::Impl {
    Options options;
    std::array<Slot, Count> handlers;
    std::array<Slot, Count> validators;
    std::array<Slot, Count> guards;
    bool accepting = true;
    std::function<QString()> contextProvider;
    QHash<int, QTimer *> continuousTimers;
};

ControllerOperations::ControllerOperations(QObject *parent)
    : ControllerOperations(Options{}, parent)
{
}

ControllerOperations::ControllerOperations(const Options &options, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Impl>())
{
    d->options = options;
}

ControllerOperations::~ControllerOperations()
{
    // A drag still running at exit would otherwise leave only debug lines.
    for (QTimer *timer : std::as_const(d->continuousTimers)) {
        if (!timer->isActive())
            continue;
        timer->stop();
        qCInfo(lcControl).noquote() << timer->property("request").toString() + QStringLiteral(" (last continuous value at shutdown)");
        qCInfo(lcControl).noquote() << timer->property("result").toString();
    }
}

const QList<QMetaType> &ControllerOperations::argumentTypes(int action)
{
    static const QList<QMetaType> none;
    if (action < 0 || action >= Count)
        return none;
    return argumentTable()[std::size_t(action)];
}

QString ControllerOperations::actionName(int action)
{
    const char *key = QMetaEnum::fromType<Action>().valueToKey(action);
    return key ? QString::fromLatin1(key) : QStringLiteral("Unknown");
}

QString ControllerOperations::statusName(Status status)
{
    const char *key = QMetaEnum::fromType<Status>().valueToKey(status);
    return key ? QString::fromLatin1(key) : QStringLiteral("Unknown");
}

bool ControllerOperations::isContinuous(int action)
{
    switch (action) {
    case ProgramSeek:
    case EditSeek:
    case SetEditVolume:
    case SetItemVolume:
    case SetMasterVolume:
    case SetBgmVolume:
        return true;
    default:
        return false;
    }
}

bool ControllerOperations::mayRegister(SlotKind kind, Action action, QObject *target,
                                       const QList<QMetaType> &declared) const
{
    const char *what = kind == SlotKind::Handler ? "handler" : "guard";
    // Checked first: the slot arrays belong to the registry's thread.
    if (QThread::currentThread() != thread()) {
        qCWarning(lcControl).noquote() << QStringLiteral("Operation %1 of %2 refused: not on the registry's thread")
                                              .arg(QLatin1String(what), actionName(action));
        return false;
    }
    if (!target || target->thread() != thread()) {
        qCWarning(lcControl).noquote()
            << QStringLiteral("Operation %1 of %2 refused: the target is missing or lives on another thread")
                   .arg(QLatin1String(what), actionName(action));
        return false;
    }
    if (action < 0 || action >= Count)
        return false;
    if (declared != argumentTypes(action)) {
        qCWarning(lcControl).noquote()
            << QStringLiteral("Operation %1 of %2 refused: its arguments differ from the action's")
                   .arg(QLatin1String(what), actionName(action));
        return false;
    }
    // The first binding wins; later ones are ignored without a word.
    const auto index = std::size_t(action);
    return kind == SlotKind::Handler ? !d->handlers[index] : !d->guards[index];
}

void ControllerOperations::storeHandler(Action action, Slot validator, Slot handler)
{
    d->validators[std::size_t(action)] = std::move(validator);
    d->handlers[std::size_t(action)] = std::move(handler);
}

void ControllerOperations::storeGuard(Action action, Slot guard)
{
    d->guards[std::size_t(action)] = std::move(guard);
}

bool ControllerOperations::hasHandler(Action action) const
{
    if (QThread::currentThread() != thread() || action < 0 || action >= Count)
        return false;
    return bool(d->handlers[std::size_t(action)]);
}

void ControllerOperations::setAccepting(bool accepting)
{
    d->accepting = accepting;
}

bool ControllerOperations::accepting() const
{
    return d->accepting;
}

void ControllerOperations::setContextProvider(std::function<QString()> provider)
{
    d->contextProvider = std::move(provider);
}

ControllerOperations::Result ControllerOperations::invoke(Action action, const QList<QVariant> &arguments,
                                                          quint64 *requestId)
{
    const quint64 id = operationCounter.fetch_add(1, std::memory_order_relaxed) + 1;
    if (requestId)
        *requestId = id;
    const bool onThread = QThread::currentThread() == thread();
    const bool continuous = onThread && isContinuous(action);
    const QString source = QString::fromUtf8(currentOperationSource());
    const QDateTime now = d->options.clock ? d->options.clock() : QDateTime::currentDateTimeUtc();
    const QString context = onThread && d->contextProvider ? d->contextProvider() : QString();
    const QString request = QStringLiteral("OP request id=%1 action=%2 requestedAt=%3 source=%4 args=%5 context=%6")
                                .arg(QString::number(id), actionName(action),
                                     now.toUTC().toString(Qt::ISODateWithMs), source,
                                     printedArguments(arguments), context);
    if (continuous)
        qCDebug(lcControl).noquote() << request;
    else
        qCInfo(lcControl).noquote() << request;

    QElapsedTimer elapsed;
    elapsed.start();
    Result result;
    // Owners' code must not take the registry, or its caller, down with it.
    try {
        result = dispatch(action, arguments, source, onThread);
    } catch (const std::exception &exception) {
        qCWarning(lcControl).noquote() << QStringLiteral("Operation %1 failed: %2")
                                              .arg(actionName(action), QString::fromLocal8Bit(exception.what()));
        result = {Rejected};
    } catch (...) {
        qCWarning(lcControl).noquote() << QStringLiteral("Operation %1 failed").arg(actionName(action));
        result = {Rejected};
    }
    const QString resultLine = QStringLiteral("OP result id=%1 status=%2 elapsedMs=%3")
                                   .arg(QString::number(id), statusName(result.status),
                                        QString::number(elapsed.elapsed()));

    if (!continuous) {
        if (result.status == Invoked)
            qCInfo(lcControl).noquote() << resultLine;
        else
            qCWarning(lcControl).noquote() << resultLine;
    } else if (result.status != Invoked) {
        qCInfo(lcControl).noquote() << request;
        qCWarning(lcControl).noquote() << resultLine;
    } else {
        qCDebug(lcControl).noquote() << resultLine;
        rememberContinuous(action, request, resultLine);
    }
    return result;
}

ControllerOperations::Result ControllerOperations::check(Action action, const QList<QVariant> &arguments) const
{
    const auto index = std::size_t(action);
    const Result valid = d->validators[index](arguments);
    if (valid.status != Invoked || !d->guards[index])
        return valid;
    // A copy, so that a guard that binds or guards other actions cannot
    // pull the callable from under itself.
    const Slot guard = d->guards[index];
    return guard(arguments);
}

ControllerOperations::Result ControllerOperations::dispatch(Action action, const QList<QVariant> &arguments,
                                                            const QString &source, bool onThread)
{
    if (!onThread)
        return {WrongThread};
    if (!d->accepting || action < 0 || action >= Count || !d->handlers[std::size_t(action)])
        return {Unavailable};
    const Result first = check(action, arguments);
    if (first.status != Invoked)
        return first;
    emit operationAboutToExecute(action, arguments, source);
    // A slot of the signal may have changed what the checks look at.
    if (!d->accepting)
        return {Unavailable};
    const Result second = check(action, arguments);
    if (second.status != Invoked)
        return second;
    Slot handler = d->handlers[std::size_t(action)];
    return handler(arguments);
}

void ControllerOperations::rememberContinuous(Action action, const QString &request, const QString &result)
{
    QTimer *&timer = d->continuousTimers[action];
    if (!timer) {
        timer = new QTimer(this);
        timer->setSingleShot(true);
        // A coarse timer may fire up to 5 % early; the quiet time is a promise.
        timer->setTimerType(Qt::PreciseTimer);
        timer->setInterval(d->options.continuousQuietInterval);
        QTimer *created = timer;
        connect(timer, &QTimer::timeout, this, [created] {
            qCInfo(lcControl).noquote()
                << created->property("request").toString() + QStringLiteral(" (last value in continuous operation)");
            qCInfo(lcControl).noquote() << created->property("result").toString();
        });
    }
    timer->setProperty("request", request);
    timer->setProperty("result", result);
    timer->start();
}

} // namespace tarnix
