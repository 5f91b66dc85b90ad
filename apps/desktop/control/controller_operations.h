#pragma once

#include "control/operation_source.h"

#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QThread>
#include <QVariant>

#include <chrono>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace tarnix {

// The one registry every operator intention travels through, whatever its
// origin: menus, panel buttons, shortcuts, MIDI, macro steps, the switcher
// and the control socket. It owns no behaviour: owners bind a handler (and
// optionally a guard) per action, and the registry checks, announces, runs
// and logs each request.
//
// Thread rules: construct, bind, setGuard, setAccepting and
// setContextProvider on the registry's thread only. invoke may be called from
// any thread; only the registry's thread gets past its first check.
class ControllerOperations : public QObject
{
    Q_OBJECT

public:
    // The numbers are part of the design: shortcut tables and the log refer
    // to them. Never renumber; a retired number stays retired.
    enum Action {
        AddFilesDialog = 0,
        AddFiles = 1,
        Exit = 2,
        TakeSelectedOnAir = 3,
        OffAir = 4,
        ProgramPlay = 5,
        ProgramPause = 6,
        ProgramTogglePlayback = 7,
        ToggleFtb = 8,
        ToggleDsk = 9,
        DskPlay = 10,
        DskPause = 11,
        DocumentNext = 12,
        DocumentPrevious = 13,
        ProgramSeek = 14,
        ProgramPlaybackRate = 15,
        MasterMute = 16,
        EditLoadSelected = 17,
        EditPlay = 18,
        EditPause = 19,
        EditStop = 20,
        EditSeek = 21,
        EditStepFrames = 22,
        EditJumpStart = 23,
        EditJumpIn = 24,
        EditJumpOut = 25,
        EditJumpEnd = 26,
        EditScanBackward = 27,
        EditScanForward = 28,
        EditScanStop = 29,
        EditSetIn = 30,
        EditSetOut = 31,
        EditInTime = 32,
        EditOutTime = 33,
        EditStartMode = 34,
        EditEndMode = 35,
        EditGoto = 36,
        EditRepeat = 37,
        EditFadeIn = 38,
        EditFadeOut = 39,
        EditEndCrossfade = 40,
        SetEditVolume = 41,
        SetItemVolume = 42,
        SetMasterVolume = 43,
        AdjustEditVolume = 44,
        AdjustItemVolume = 45,
        AdjustMasterVolume = 46,
        ResetEditVolume = 47,
        ResetItemVolume = 48,
        ResetMasterVolume = 49,
        ItemFadeIn = 50,
        ItemFadeOut = 51,
        MasterFadeIn = 52,
        MasterFadeOut = 53,
        ActivatePlaylist = 54,
        CreatePlaylist = 55,
        SelectItem = 56,
        SelectItemNumber = 57,
        MoveItem = 58,
        MoveItemToRow = 59,
        TransferItem = 60,
        RemoveItem = 61,
        PlaylistBulk = 62,
        CopySelectedState = 63,
        PasteSelectedState = 64,
        CopyItemState = 65,
        PasteItemState = 66,
        BgmPlay = 67,
        BgmPause = 68,
        BgmStop = 69,
        BgmFadeIn = 70,
        BgmFadeOut = 71,
        RenamePlaylist = 72,
        SetItemDisplayName = 73,
        SetItemColor = 74,
        SetItemSeparatorBelow = 75,
        SetItemStartMode = 76,
        SetItemEndMode = 77,
        SetItemFadeInEnabled = 78,
        SetItemFadeOutEnabled = 79,
        SetItemEndCrossfadeEnabled = 80,
        EditToggleStartMode = 81,
        EditToggleFadeOut = 82,
        EditReset = 83,
        SetBgmVolume = 84,
        AdjustBgmVolume = 85,
        ResetBgmVolume = 86,
        MacroCue = 87,
        MacroTake = 88,
        CancelMacroRequests = 89,
        MacroItemSettings = 90,
        MacroRuntimeSetting = 91,
        MacroTransport = 92,
        NextOutputDisplay = 93,
        PreviewCapture = 94,
        ProgramCapture = 95,
        TogglePfl = 96,
        OperatorTimerStart = 97,
        OperatorTimerPause = 98,
        OperatorTimerReset = 99,
        OperatorTimerSettings = 100,
        OpenNominalEq = 101,
        OpenItemEq = 102,
        OpenMasterEq = 103,
        OpenSettings = 104,
        RemoveSelectedItem = 105,
        SelectRelativeItem = 106,
        BgmFadeInConfigured = 107,
        BgmFadeOutConfigured = 108,
        Count = 109
    };
    Q_ENUM(Action)

    enum Status { Invoked = 0, Rejected = 1, InvalidArguments = 2, Unavailable = 3, WrongThread = 4 };
    Q_ENUM(Status)

    struct Result {
        Status status = Invoked;
    };

    using Slot = std::function<Result(const QList<QVariant> &)>;

    struct Options {
        // A continuous action (seek, fader) logs its last value at info level
        // once it has been quiet for this long.
        std::chrono::milliseconds continuousQuietInterval{250};
        // UTC time of the request line; empty: the system clock.
        std::function<QDateTime()> clock;
    };

    explicit ControllerOperations(QObject *parent = nullptr);
    ControllerOperations(const Options &options, QObject *parent = nullptr);
    // Writes the last value of every continuous action still waiting.
    ~ControllerOperations() override;

    // Declared argument types of an action, exactly as a request must carry
    // them; empty for an action out of range.
    static const QList<QMetaType> &argumentTypes(int action);
    // The key name of an action; "Unknown" when there is none.
    static QString actionName(int action);
    static QString statusName(Status status);
    // Actions whose requests come in bursts (seek, faders): logged at debug
    // level, with their last value repeated at info level once quiet.
    static bool isContinuous(int action);

    // Registers the handler of an action together with its validator. Nothing
    // happens unless the caller is on the registry's thread, the target lives
    // on that thread, the action is in range, has no handler yet, and Args
    // are exactly the action's declared argument types. The first binding
    // wins. Fn takes Args... and returns void, bool (false: Rejected) or
    // Result. A target that dies makes the action Unavailable.
    template <typename... Args, typename Fn>
    bool bind(Action action, QObject *target, Fn handler);

    // bind() for a member function of the target.
    template <typename Target, typename Return, typename... Args>
    bool bindMember(Action action, Target *target, Return (Target::*member)(Args...))
    {
        return bind<std::decay_t<Args>...>(action, target, [target, member](std::decay_t<Args>... values) {
            return (target->*member)(values...);
        });
    }

    template <typename Target, typename Return, typename... Args>
    bool bindMember(Action action, Target *target, Return (Target::*member)(Args...) const)
    {
        return bind<std::decay_t<Args>...>(action, target, [target, member](std::decay_t<Args>... values) {
            return (target->*member)(values...);
        });
    }

    // Registers a guard that checks operator state before the handler runs;
    // the same preconditions and first-one-wins rule as bind().
    template <typename... Args, typename Fn>
    bool setGuard(Action action, QObject *target, Fn guard);

    bool hasHandler(Action action) const;

    // The one entry point; it never throws (a handler that throws ends as
    // Rejected). requestId, when given, receives the id of the request's log
    // line.
    Result invoke(Action action, const QList<QVariant> &arguments, quint64 *requestId = nullptr);
    Result invoke(Action action) { return invoke(action, QList<QVariant>()); }
    // Packs typed values; each keeps its exact type (an int stays an int).
    template <typename First, typename... Rest>
        requires(!std::is_same_v<std::decay_t<First>, QList<QVariant>>)
    Result invoke(Action action, First &&first, Rest &&...rest)
    {
        return invoke(action, QList<QVariant>{QVariant::fromValue(std::forward<First>(first)),
                                              QVariant::fromValue(std::forward<Rest>(rest))...});
    }

    // While false, every request ends as Unavailable (shut-down in progress).
    void setAccepting(bool accepting);
    bool accepting() const;

    // Describes the application state for the request line.
    void setContextProvider(std::function<QString()> provider);

signals:
    // Emitted synchronously after the thread check and the first check of
    // validator and guard, before the handler runs.
    void operationAboutToExecute(tarnix::ControllerOperations::Action action, const QVariantList &arguments,
                                 const QString &source);

private:
    // Checks shared by every validator, handler and guard adapter: the target
    // lives, runs on this thread, and the values carry exactly Args.
    template <typename... Args>
    static Result checkCall(const QPointer<QObject> &target, const QList<QVariant> &arguments)
    {
        if (!target)
            return {Unavailable};
        if (target->thread() != QThread::currentThread())
            return {WrongThread};
        if (!argumentsMatch<Args...>(arguments))
            return {InvalidArguments};
        return {Invoked};
    }

    template <typename... Args>
    static bool argumentsMatch(const QList<QVariant> &arguments)
    {
        if (arguments.size() != qsizetype(sizeof...(Args)))
            return false;
        return matchEach<Args...>(arguments, std::index_sequence_for<Args...>());
    }

    template <typename... Args, std::size_t... I>
    static bool matchEach(const QList<QVariant> &arguments, std::index_sequence<I...>)
    {
        return (sameType(arguments.at(qsizetype(I)).metaType(), QMetaType::fromType<Args>()) && ...);
    }

    static bool sameType(QMetaType actual, QMetaType declared) { return actual == declared; }

    template <typename Return>
    static Result toResult(Return &&value)
    {
        if constexpr (std::is_same_v<std::decay_t<Return>, Result>)
            return value;
        else
            return {value ? Invoked : Rejected};
    }

    template <typename... Args, typename Fn, std::size_t... I>
    static Result callTyped(Fn &fn, const QList<QVariant> &arguments, std::index_sequence<I...>)
    {
        using Return = std::invoke_result_t<Fn &, Args...>;
        if constexpr (std::is_void_v<Return>) {
            fn(arguments.at(qsizetype(I)).template value<Args>()...);
            return {Invoked};
        } else {
            static_assert(std::is_same_v<std::decay_t<Return>, Result> || std::is_same_v<std::decay_t<Return>, bool>,
                          "an operation returns void, bool or Result");
            return toResult(fn(arguments.at(qsizetype(I)).template value<Args>()...));
        }
    }

    template <typename... Args, typename Fn>
    static Slot typedSlot(QObject *target, Fn fn)
    {
        return [guarded = QPointer<QObject>(target), fn = std::move(fn)](const QList<QVariant> &arguments) mutable {
            const Result check = checkCall<Args...>(guarded, arguments);
            if (check.status != Invoked)
                return check;
            return callTyped<Args...>(fn, arguments, std::index_sequence_for<Args...>());
        };
    }

    template <typename... Args>
    static Slot validatorFor(QObject *target)
    {
        return [guarded = QPointer<QObject>(target)](const QList<QVariant> &arguments) {
            return checkCall<Args...>(guarded, arguments);
        };
    }

    enum class SlotKind { Handler, Guard };
    // Whether a slot of the action may be set now; logs why not.
    bool mayRegister(SlotKind kind, Action action, QObject *target, const QList<QMetaType> &declared) const;
    template <typename... Args>
    static QList<QMetaType> metaTypesOf()
    {
        return {QMetaType::fromType<Args>()...};
    }
    void storeHandler(Action action, Slot validator, Slot handler);
    Result check(Action action, const QList<QVariant> &arguments) const;
    Result dispatch(Action action, const QList<QVariant> &arguments, const QString &source, bool onThread);
    void rememberContinuous(Action action, const QString &request, const QString &result);
    void storeGuard(Action action, Slot guard);

    struct Impl;
    std::unique_ptr<Impl> d;
};

template <typename... Args, typename Fn>
bool ControllerOperations::bind(Action action, QObject *target, Fn handler)
{
    static_assert(std::is_invocable_v<Fn &, Args...>, "the handler must take the declared arguments");
    if (!mayRegister(SlotKind::Handler, action, target, metaTypesOf<Args...>()))
        return false;
    storeHandler(action, validatorFor<Args...>(target), typedSlot<Args...>(target, std::move(handler)));
    return true;
}

template <typename... Args, typename Fn>
bool ControllerOperations::setGuard(Action action, QObject *target, Fn guard)
{
    static_assert(std::is_invocable_v<Fn &, Args...>, "the guard must take the declared arguments");
    if (!mayRegister(SlotKind::Guard, action, target, metaTypesOf<Args...>()))
        return false;
    storeGuard(action, typedSlot<Args...>(target, std::move(guard)));
    return true;
}

} // namespace tarnix
