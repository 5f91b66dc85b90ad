// The debug snapshot: the state of the objects, written to the log while
// debug mode is on. It reads and holds nothing of its own.

#include "MainController_impl.h"

#include "playlist/playlist_model.h"
#include "playlist/playlist_text.h"
#include "playout/dual_deck_player.h"
#include "playout/program_playout_controller.h"
#include "playlist/item_selection.h"
#include "shell/application_log.h"
#include "shell/log_categories.h"

namespace tarnix {

namespace {

QString fadeText(const PlaylistFadeSetting &fade)
{
    return fade.enabled ? QString::number(fade.durationMs) : QStringLiteral("off");
}

} // namespace

void MainController::Impl::writeDebugSnapshot() const
{
    if (!debugMode() || !model)
        return;
    qCInfo(lcSystem).noquote() << QStringLiteral("DEBUG snapshot onAir=%1 cue=%2 edit=%3 dsk=%4 bgm=%5")
                                      .arg(model->onAirItemId())
                                      .arg(model->cueItemId())
                                      .arg(model->editItemId())
                                      .arg(model->dskItemId())
                                      .arg(model->bgmItemId());
    qCInfo(lcSystem).noquote() << contextText();
    for (qint32 playlist : model->playlistNumbers()) {
        for (quint64 id : model->itemIds(playlist)) {
            const std::optional<PlaylistItem> item = model->item(id);
            if (!item)
                continue;
            const PlaylistItemSettings &s = item->settings;
            qCInfo(lcSystem).noquote()
                << QStringLiteral("DEBUG item id=%1 playlist=%2 row=%3 inMs=%4 outMs=%5 startMode=%6 endMode=%7 "
                                  "repeat=%8 repeatEnd=%9 goto=%10 volumeTenthsDb=%11 fadeIn=%12 fadeOut=%13 "
                                  "crossfade=%14")
                       .arg(id)
                       .arg(playlist)
                       .arg(model->rowOf(id))
                       .arg(s.inPointMs)
                       .arg(s.outPointMs ? QString::number(*s.outPointMs) : QStringLiteral("none"))
                       .arg(toText(s.startMode), toText(s.endMode))
                       .arg(s.repeatCount)
                       .arg(toText(s.repeatEndMode))
                       .arg(s.gotoTargetItemId)
                       .arg(s.nominalVolumeTenthsDb)
                       .arg(fadeText(s.fadeIn), fadeText(s.fadeOut), fadeText(s.endCrossfade));
        }
    }
    const ProgramAudioOutput *audio = dualDeckPlayer ? dualDeckPlayer->audioOutput() : nullptr;
    qCInfo(lcSystem).noquote() << QStringLiteral("OUTPUT device=%1 status=%2")
                                      .arg(audio ? audio->activeDevice() : QString(),
                                           audio ? audio->statusKey() : QStringLiteral("unavailable"));
}

} // namespace tarnix
