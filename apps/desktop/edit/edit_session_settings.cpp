// The loaded item's settings as the EDIT session changes them: In and Out
// with their own checks, and every other setting in one shape (a loaded,
// unlocked item; the settings copied, one field set, saved or refused).
// A refusal shows the model's value on the panel again.

#include "edit/edit_session_controller_impl.h"

#include "edit/edit_texts.h"
#include "playlist/clock_text.h"
#include "playlist/mode_names.h"

#include <cmath>

namespace tarnix {

using edit_text::text;

namespace {

QString onOff(bool on)
{
    return on ? QStringLiteral("On") : QStringLiteral("Off");
}

QString seconds(qint64 ms)
{
    return QString::number(ms / 1000.0, 'f', 1);
}

} // namespace

bool EditSessionController::Impl::changeSettings(const std::function<bool(PlaylistItemSettings &)> &change,
                                                 const QString &failure)
{
    const std::optional<PlaylistItem> loaded = item();
    if (!loaded || model->isLocked(loaded->id))
        return false;
    PlaylistItemSettings settings = loaded->settings;
    if (!change(settings) || !model->setItemSettings(loaded->id, settings)) {
        status(failure, true);
        showItemOnPanel();
        return false;
    }
    return true;
}

void EditSessionController::Impl::setPoint(bool in, std::optional<qint64> given)
{
    const std::optional<PlaylistItem> loaded = item();
    if (!loaded)
        return;
    auto refuse = [this](const QString &text) {
        status(text, true);
        showItemOnPanel();
    };
    if (model->isLockedForPoints(loaded->id)) {
        if (loaded->id == model->onAirItemId())
            refuse(edit_text::pointsLockedOnAir());
        else if (loaded->id == model->bgmItemId())
            refuse(edit_text::pointsLockedBgm());
        else if (loaded->sourceType != PlaylistSourceType::file)
            refuse(edit_text::pointsFileOnly());
        else
            refuse(edit_text::pointsSettingsLocked());
        return;
    }
    if (!player || !player->isLoaded() || loading) {
        refuse(text("edit.error.media_not_loaded", "Load an item into EDIT before changing its In/Out points."));
        return;
    }
    qint64 position = given ? *given : q->positionMs();
    if (position < 0) {
        refuse(text("edit.error.position_unknown", "Could not determine the current EDIT position."));
        return;
    }
    const qint64 duration = player->durationMs();
    if (given && duration >= 0 && position > duration) {
        refuse(text("edit.error.point_beyond_duration", "Set the In/Out point within the media duration."));
        return;
    }
    PlaylistItemSettings settings = loaded->settings;
    if (in) {
        if ((duration >= 0 && position >= duration) || (settings.outPointMs && position >= *settings.outPointMs)) {
            refuse(text("edit.error.in_after_out", "Set the In point before the Out point and the end of the media."));
            return;
        }
        settings.inPointMs = position;
    } else {
        if (position <= settings.inPointMs) {
            refuse(text("edit.error.out_before_in", "Set the Out point after the In point."));
            return;
        }
        if (duration >= 0)
            position = std::min(position, duration);
        settings.outPointMs = position;
    }
    if (!model->setItemSettings(loaded->id, settings)) {
        refuse(text("edit.error.point_save", "Could not save the In/Out point."));
        return;
    }
    status(QStringLiteral("EDIT %1 %2 | %3").arg(in ? QStringLiteral("IN") : QStringLiteral("OUT"), clockText(position),
                                                   itemName));
}

void EditSessionController::setInPoint() { d->setPoint(true, std::nullopt); }
void EditSessionController::setOutPoint() { d->setPoint(false, std::nullopt); }
void EditSessionController::setInPointTime(qint64 positionMs) { d->setPoint(true, positionMs); }
void EditSessionController::setOutPointTime(qint64 positionMs) { d->setPoint(false, positionMs); }

void EditSessionController::setStartMode(PlaylistStartMode mode)
{
    if (d->changeSettings([mode](PlaylistItemSettings &s) { s.startMode = mode; return true; },
                          text("edit.error.start_mode", "Could not save the Start Mode.")))
        d->status(QStringLiteral("EDIT Start Mode: %1 | %2")
                      .arg(mode == PlaylistStartMode::play ? QStringLiteral("Play") : QStringLiteral("Pause"),
                           d->itemName));
}

void EditSessionController::toggleStartMode()
{
    if (const std::optional<PlaylistItem> loaded = d->item())
        setStartMode(loaded->settings.startMode == PlaylistStartMode::play ? PlaylistStartMode::pause
                                                                           : PlaylistStartMode::play);
}

void EditSessionController::setEndMode(PlaylistEndMode mode)
{
    if (d->changeSettings([mode](PlaylistItemSettings &s) { s.endMode = mode; return true; },
                          text("edit.error.end_mode", "Could not save the End Mode.")))
        d->status(QStringLiteral("EDIT End Mode: %1 | %2").arg(endModeName(mode), d->itemName));
}

void EditSessionController::setGotoTarget(quint64 itemId)
{
    PlaylistModel *model = d->model;
    if (!model)
        return;
    const std::optional<PlaylistItem> target = itemId ? model->item(itemId) : std::nullopt;
    if (itemId && !target) {
        d->status(text("edit.error.goto", "Could not save the GOTO destination."), true);
        d->showItemOnPanel();
        return;
    }
    if (d->changeSettings([itemId](PlaylistItemSettings &s) { s.gotoTargetItemId = itemId; return true; },
                          text("edit.error.goto", "Could not save the GOTO destination.")))
        d->status(QStringLiteral("EDIT GOTO: %1 | %2")
                      .arg(target ? QStringLiteral("P%1-%2 | %3")
                                        .arg(target->playlistNumber)
                                        .arg(model->rowOf(itemId))
                                        .arg(target->displayName)
                                  : QStringLiteral("None"),
                           d->itemName));
}

void EditSessionController::setRepeatOptions(qint32 count, PlaylistRepeatEndMode endMode)
{
    if (d->changeSettings(
            [count, endMode](PlaylistItemSettings &s) {
                if (s.endMode != PlaylistEndMode::repeat || count < 0)
                    return false;
                s.repeatCount = count;
                s.repeatEndMode = endMode;
                return true;
            },
            text("edit.error.repeat", "Could not save the repeat options.")))
        d->status(QStringLiteral("EDIT Repeat: %1 | After: %2 | %3")
                      .arg(count == 0 ? QStringLiteral("\u221e") : QString::number(count), repeatEndModeName(endMode),
                           d->itemName));
}

void EditSessionController::setFadeIn(bool enabled, qint64 durationMs)
{
    if (d->changeSettings([&](PlaylistItemSettings &s) { s.fadeIn = {enabled, durationMs}; return true; },
                          text("edit.error.fade_in", "Could not save the fade-in settings.")))
        d->status(QStringLiteral("EDIT Fade In: %1 (%2 s) | %3").arg(onOff(enabled), seconds(durationMs), d->itemName));
}

void EditSessionController::setFadeOut(bool enabled, qint64 durationMs)
{
    if (d->changeSettings([&](PlaylistItemSettings &s) { s.fadeOut = {enabled, durationMs}; return true; },
                          text("edit.error.fade_out", "Could not save the fade-out settings.")))
        d->status(QStringLiteral("EDIT Fade Out: %1 (%2 s) | %3").arg(onOff(enabled), seconds(durationMs), d->itemName));
}

void EditSessionController::toggleFadeOut()
{
    if (const std::optional<PlaylistItem> loaded = d->item())
        setFadeOut(!loaded->settings.fadeOut.enabled, loaded->settings.fadeOut.durationMs);
}

void EditSessionController::setEndCrossfade(bool enabled, qint64 durationMs)
{
    if (d->changeSettings([&](PlaylistItemSettings &s) { s.endCrossfade = {enabled, durationMs}; return true; },
                          text("edit.error.end_crossfade", "Could not save the end crossfade settings.")))
        d->status(QStringLiteral("EDIT End Crossfade: %1 (%2 s) | %3")
                      .arg(onOff(enabled), seconds(durationMs), d->itemName));
}

void EditSessionController::setNominalVolume(qint32 volumeTenthsDb)
{
    if (!d->changeSettings([volumeTenthsDb](PlaylistItemSettings &s) { s.nominalVolumeTenthsDb = volumeTenthsDb; return true; },
                           text("edit.error.nominal_volume", "Could not save the nominal volume.")))
        return;
    if (d->player)
        d->player->setNominalGain(std::pow(10.0, volumeTenthsDb / 200.0));
    d->status(QStringLiteral("EDIT Nominal Volume: %1 | %2")
                  .arg(QStringLiteral("%1 dB").arg(QString::number(volumeTenthsDb / 10.0, 'f', 1)), d->itemName));
}

void EditSessionController::setNominalDelayFrames(qint32 frames)
{
    if (!d->changeSettings([frames](PlaylistItemSettings &s) { s.nominalAudioDelayFrames = frames; return true; },
                           text("edit.error.nominal_delay", "Could not save the nominal delay.")))
        return;
    if (d->player)
        d->player->setNominalDelayFrames(frames);
}

void EditSessionController::setNominalEq(qint32 lowTenthsDb, qint32 midTenthsDb, qint32 highTenthsDb)
{
    if (!d->changeSettings(
            [=](PlaylistItemSettings &s) {
                s.nominalEqLowTenthsDb = lowTenthsDb;
                s.nominalEqMidTenthsDb = midTenthsDb;
                s.nominalEqHighTenthsDb = highTenthsDb;
                return true;
            },
            text("edit.error.nominal_eq", "Could not save the nominal EQ.")))
        return;
    if (d->player)
        d->player->setNominalEq(lowTenthsDb / 10.0, midTenthsDb / 10.0, highTenthsDb / 10.0);
}

} // namespace tarnix
