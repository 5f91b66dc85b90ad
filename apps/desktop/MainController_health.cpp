// The health figures of the run: the program picture's counters, the
// process and the operator's messages, answered to the control socket's
// {"query":"health"} and written as a HEALTH record once a record interval.

#include "MainController_impl.h"

#include "control/control_socket_server.h"
#include "playout/dual_deck_player.h"
#include "shell/health_monitor.h"
#include "shell/user_info_center.h"
#include "video/program_gpu_compositor.h"

namespace tarnix {

void MainController::Impl::createHealthMonitor()
{
    HealthMonitorOptions healthOptions;
    healthOptions.sampleInterval = options.healthSampleInterval;
    healthOptions.recordInterval = options.healthRecordInterval;
    health = std::make_unique<HealthMonitor>(healthOptions);
    // The player is kept until shutdown, which ends the monitor first.
    health->setProgramCounters([this]() -> std::optional<ProgramFrameCounters> {
        const ProgramGpuCompositor *compositor =
            programPlayerAvailable && dualDeckPlayer ? dualDeckPlayer->compositor() : nullptr;
        if (!compositor)
            return std::nullopt;
        return ProgramFrameCounters{compositor->renderCount(), compositor->presentCount(),
                                    compositor->publishMisses(), compositor->largestRenderGapMs()};
    });
    health->setOperatorMessages(userInfoCenter.get());
    health->start();
}

void MainController::Impl::bindHealthQuery()
{
    if (!health || !controlSocket)
        return;
    HealthMonitor *monitor = health.get();
    controlSocket->setQueryHandler(QStringLiteral("health"), monitor, [monitor] { return monitor->json(); });
}

} // namespace tarnix
