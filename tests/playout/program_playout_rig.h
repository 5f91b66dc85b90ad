#pragma once

#include "kit/item_request.h"
#include "fake_bgm_player.h"
#include "fake_program_player.h"

#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"
#include "shell/user_info_center.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace tarnix::test {

// A controller on a fake player, a model with files that always exist, and a
// clock the test moves.
struct ProgramPlayoutRig {
    qint64 clockMs = 1000;
    QTemporaryDir media;
    PlaylistModel model{nullptr, PlaylistModelOptions{[](const QString &) { return true; }}};
    UserInfoCenter info;
    ControllerOperations operations;
    ControlStateRegistry state;
    SelectionHolder selection{&model, &operations};
    FakeProgramPlayer *player = nullptr;
    FakeBgmPlayer bgm;
    std::unique_ptr<ProgramPlayoutController> controller;

    // `adjust` changes the options before the controller is built (e.g. to
    // run its own timers).
    explicit ProgramPlayoutRig(const std::function<void(ProgramPlayoutOptions &)> &adjust = {})
    {
        auto fake = std::make_unique<FakeProgramPlayer>();
        player = fake.get();
        fake->bgm = &bgm;
        ProgramPlayoutOptions options;
        options.startTimers = false;
        options.monotonicMs = [this] { return clockMs; };
        options.audio.monotonicMs = [this] { return clockMs; };
        if (adjust)
            adjust(options);
        controller = std::make_unique<ProgramPlayoutController>(std::move(fake), &model, &selection, &info,
                                                                &operations, &state, options);
    }

    quint64 add(const QString &path, PlaylistItemSettings settings = {}, qint64 durationMs = 3000,
                PlaylistMediaType mediaType = PlaylistMediaType::video, qint32 playlist = 0)
    {
        const QString file = testkit::touchFile(media.filePath(QFileInfo(path).fileName()));
        const QList<quint64> ids = model.addItems(
            {testkit::ItemRequest(file).name(path).type(mediaType).settings(settings).playlist(playlist)});
        player->durations.insert(file, durationMs);
        return ids.value(0);
    }

    // Selects, prepares and takes an item, as an operator would.
    bool putOnAir(quint64 itemId)
    {
        selection.selectByOperator(itemId);
        player->makeReady();
        return controller->takeOnAir();
    }

    void advance(qint64 ms)
    {
        clockMs += ms;
        controller->stepAnimations();
    }
};

inline PlaylistItemSettings playing(PlaylistEndMode endMode = PlaylistEndMode::pause)
{
    PlaylistItemSettings settings;
    settings.startMode = PlaylistStartMode::play;
    settings.endMode = endMode;
    return settings;
}

} // namespace tarnix::test
