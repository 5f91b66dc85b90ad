#include "edit/edit_operations.h"

#include "control/controller_operations.h"
#include "edit/edit_session_controller.h"

#include <algorithm>

namespace tarnix {

using Ops = ControllerOperations;

void bindEditOperations(ControllerOperations *ops, EditSessionController *session)
{
    if (!ops || !session)
        return;
    // Runs a session slot; refused when it put an error in the status line.
    auto run = [session](auto &&slot) {
        bool refused = false;
        const QMetaObject::Connection watch = QObject::connect(
            session, &EditSessionController::statusChanged,
            [&refused](const QString &, bool error) { refused = refused || error; });
        slot();
        QObject::disconnect(watch);
        return !refused;
    };
    auto loaded = [session] { return session->isLoaded(); };

    ops->bind<>(Ops::EditLoadSelected, session, [session, run] { return run([session] { session->loadSelectedItem(); }); });
    ops->bind<>(Ops::EditPlay, session, [session, run, loaded] { return loaded() && run([session] { session->play(); }); });
    ops->bind<>(Ops::EditPause, session, [session, run, loaded] { return loaded() && run([session] { session->pause(); }); });
    ops->bind<>(Ops::EditStop, session, [session, run, loaded] { return loaded() && run([session] { session->stopPlayback(); }); });
    ops->bind<qint64>(Ops::EditSeek, session, [session, run, loaded](qint64 position) {
        return loaded() && run([&] { session->seek(position); });
    });
    ops->bind<int>(Ops::EditStepFrames, session, [session, run, loaded](int frames) {
        return loaded() && run([&] { session->stepFrames(frames); });
    });
    ops->bind<>(Ops::EditJumpStart, session, [session, run, loaded] { return loaded() && run([session] { session->jumpToStart(); }); });
    ops->bind<>(Ops::EditJumpIn, session, [session, run, loaded] { return loaded() && run([session] { session->jumpToIn(); }); });
    ops->bind<>(Ops::EditJumpOut, session, [session, run, loaded] { return loaded() && run([session] { session->jumpToOut(); }); });
    ops->bind<>(Ops::EditJumpEnd, session, [session, run, loaded] { return loaded() && run([session] { session->jumpToEnd(); }); });
    ops->bind<>(Ops::EditScanBackward, session, [session, run, loaded] {
        return loaded() && run([session] { session->startScanBackward(); });
    });
    ops->bind<>(Ops::EditScanForward, session, [session, run, loaded] {
        return loaded() && run([session] { session->startScanForward(); });
    });
    ops->bind<>(Ops::EditScanStop, session, [session] { session->stopScan(); });
    ops->bind<>(Ops::EditSetIn, session, [session, run] { return run([session] { session->setInPoint(); }); });
    ops->bind<>(Ops::EditSetOut, session, [session, run] { return run([session] { session->setOutPoint(); }); });
    ops->bind<qint64>(Ops::EditInTime, session, [session, run](qint64 position) {
        return run([&] { session->setInPointTime(position); });
    });
    ops->bind<qint64>(Ops::EditOutTime, session, [session, run](qint64 position) {
        return run([&] { session->setOutPointTime(position); });
    });
    ops->bind<PlaylistStartMode>(Ops::EditStartMode, session, [session, run](PlaylistStartMode mode) {
        return run([&] { session->setStartMode(mode); });
    });
    ops->bind<PlaylistEndMode>(Ops::EditEndMode, session, [session, run](PlaylistEndMode mode) {
        return run([&] { session->setEndMode(mode); });
    });
    ops->bind<quint64>(Ops::EditGoto, session, [session, run](quint64 itemId) {
        return run([&] { session->setGotoTarget(itemId); });
    });
    ops->bind<int, PlaylistRepeatEndMode>(Ops::EditRepeat, session,
                                          [session, run](int count, PlaylistRepeatEndMode after) {
                                              return run([&] { session->setRepeatOptions(count, after); });
                                          });
    ops->bind<bool, qint64>(Ops::EditFadeIn, session, [session, run](bool enabled, qint64 durationMs) {
        return run([&] { session->setFadeIn(enabled, durationMs); });
    });
    ops->bind<bool, qint64>(Ops::EditFadeOut, session, [session, run](bool enabled, qint64 durationMs) {
        return run([&] { session->setFadeOut(enabled, durationMs); });
    });
    ops->bind<bool, qint64>(Ops::EditEndCrossfade, session, [session, run](bool enabled, qint64 durationMs) {
        return run([&] { session->setEndCrossfade(enabled, durationMs); });
    });
    ops->bind<>(Ops::EditToggleStartMode, session, [session, run] { return run([session] { session->toggleStartMode(); }); });
    ops->bind<>(Ops::EditToggleFadeOut, session, [session, run] { return run([session] { session->toggleFadeOut(); }); });
    ops->bind<>(Ops::EditReset, session, [session] { session->resetEditor(); });

    // The loaded item's nominal volume, in tenths of a dB from off (-96 dB)
    // to +6 dB, as the panel's fader has it.
    auto setVolume = [session, run](int tenths) {
        return session->loadedItemId()
               && run([&] { session->setNominalVolume(std::clamp(tenths, kVolumeOffTenthsDb, kVolumeTopTenthsDb)); });
    };
    ops->bind<int>(Ops::SetEditVolume, session, setVolume);
    ops->bind<int>(Ops::AdjustEditVolume, session, [session, setVolume](int delta) {
        const std::optional<qint32> current = session->nominalVolumeTenthsDb();
        return current && setVolume(*current + delta);
    });
    ops->bind<>(Ops::ResetEditVolume, session, [setVolume] { return setVolume(0); });
}

} // namespace tarnix
