#pragma once

#include <QString>

// Operator texts of the ON AIR controller, word for word.
namespace tarnix::texts {

inline QString selectItemToTake() { return QStringLiteral("Select an item to take ON AIR."); }
inline QString couldNotTake() { return QStringLiteral("Could not take the selected item ON AIR."); }
inline QString couldNotRetrieveItem() { return QStringLiteral("Could not retrieve the playlist item to take ON AIR."); }
inline QString couldNotRetrieveLatestAtStart()
{
    return QStringLiteral("Could not retrieve the latest item information when ON AIR started.");
}
inline QString startModePlayFailed()
{
    return QStringLiteral("The item was taken ON AIR, but Start Mode \"Play\" could not be started.");
}
inline QString offAirFailed() { return QStringLiteral("Failed to switch OFF AIR. The playback state was not changed."); }
inline QString fileNotFound() { return QStringLiteral("The registered file could not be found.\n"); }
inline QString inputTypeUnsupported()
{
    return QStringLiteral("This input type is not yet supported for ON AIR playout.");
}
inline QString seekFailed() { return QStringLiteral("ON AIR seek failed."); }
inline QString seekToInFailed() { return QStringLiteral("Failed to seek to the In point before playback."); }
inline QString playbackFailed() { return QStringLiteral("Playback failed."); }
inline QString stillRestoreFailed() { return QStringLiteral("Could not restore the still image for playback."); }
inline QString pauseFailed() { return QStringLiteral("Pause failed."); }
inline QString rateChangeFailed() { return QStringLiteral("Playback rate change failed."); }
inline QString mediaOffline() { return QStringLiteral("MEDIA OFFLINE\n"); }
inline QString pipelineAlsoFailedToStop() { return QStringLiteral("\nThe playback pipeline also failed to stop."); }
inline QString cannotDeleteOnAir() { return QStringLiteral("An item currently ON AIR cannot be deleted."); }
inline QString itemInDskFallback() { return QStringLiteral("An item in DSK cannot be taken ON AIR."); }
inline QString cannotDeleteDsk() { return QStringLiteral("An item currently in DSK cannot be deleted."); }

// End modes.
inline QString nextNotPrepared() { return QStringLiteral("The next playlist item could not be prepared."); }
inline QString nextNotTaken() { return QStringLiteral("The prepared next playlist item could not be taken ON AIR."); }
inline QString repeatNotTaken() { return QStringLiteral("The prepared repeat could not be taken ON AIR."); }
inline QString repeatNotAdvanced() { return QStringLiteral("The repeat state could not be advanced."); }
inline QString repeatNotStarted() { return QStringLiteral("The prepared repeat could not start playback."); }
inline QString endModeFailed(const QString &mode) { return QStringLiteral("Could not execute End Mode \"%1\".").arg(mode); }
inline QString endProcessingNoItem()
{
    return QStringLiteral("Could not retrieve the latest playlist item information during end processing.");
}
inline QString noNextItem() { return QStringLiteral("No eligible next playlist item is available."); }
inline QString noGotoItem() { return QStringLiteral("No eligible GOTO destination is selected or available."); }

// English texts of catalogue keys not yet in the catalogue.
inline QString bgmModeOnAirFallback() { return QStringLiteral("Items of a BGM playlist play on the BGM player, not ON AIR."); }
inline QString audioOutputUnavailableFallback() { return QStringLiteral("The program audio output is unavailable."); }
inline QString audioOutputChangingFallback() { return QStringLiteral("The program audio output is changing. Try again."); }
inline QString deleteBgmFallback() { return QStringLiteral("The item playing on the BGM player cannot be deleted."); }
inline QString liveAudioErrorFallback() { return QStringLiteral("Live audio input error: %1"); }
inline QString nativeOnAirFallback()
{
    return QStringLiteral("A PowerPoint slide show is ON AIR. Take it OFF AIR before converting a presentation.");
}
inline QString releaseCueFailedFallback()
{
    return QStringLiteral("The standby player could not release its PowerPoint slide show for the conversion.");
}

// PowerPoint conversion hold.
inline QString conversionHoldUnavailable() { return QStringLiteral("PowerPoint conversion preparation is unavailable."); }

} // namespace tarnix::texts

// Macro reservation.
namespace tarnix::texts {

inline QString onAirUnavailable() { return QStringLiteral("ON AIR is unavailable."); }
inline QString macroTargetGone() { return QStringLiteral("The macro target no longer exists."); }
inline QString macroTargetUnsupported()
{
    return QStringLiteral(
        "Macro preparation and ON AIR support video, audio and still-image files in standard playlists only.");
}
inline QString macroTargetConverting() { return QStringLiteral("The macro target is still being imported or converted."); }
inline QString macroTargetUnavailable() { return QStringLiteral("The macro target file is unavailable."); }
inline QString macroTargetInDsk() { return QStringLiteral("The macro target is currently used by DSK."); }
inline QString sameItemRetakeDisabled() { return QStringLiteral("Same-item ON AIR retake is disabled."); }
inline QString macroRequestPending()
{
    return QStringLiteral("A macro preparation or ON AIR request is already pending, or its ID is invalid.");
}
inline QString standbyInUse()
{
    return QStringLiteral("Manual ON AIR or automatic NEXT/GOTO/REPEAT is already using the standby player.");
}
inline QString macroCrossfadeRange() { return QStringLiteral("The macro crossfade duration is outside the supported range."); }
inline QString timedTakeNotReady() { return QStringLiteral("Timed ON AIR requires this exact item to be ready."); }
inline QString macroReplaced() { return QStringLiteral("The macro standby reservation was replaced."); }
inline QString macroItemChanged() { return QStringLiteral("The macro standby item changed."); }
inline QString macroItemSettingsChanged() { return QStringLiteral("The macro standby item settings changed."); }
inline QString macroItemUnavailable() { return QStringLiteral("The macro standby item became unavailable."); }
inline QString automaticHasPriority()
{
    return QStringLiteral("Automatic NEXT/GOTO/REPEAT preparation has priority over the macro standby reservation.");
}
inline QString macroNotTaken() { return QStringLiteral("The prepared macro item could not be taken ON AIR."); }
inline QString macroNotPrepared() { return QStringLiteral("The requested macro item could not be prepared."); }
inline QString manualTakeReplacedMacro() { return QStringLiteral("Manual ON AIR replaced the macro standby reservation."); }
inline QString offAirReleasedMacro() { return QStringLiteral("OFF AIR released the macro standby reservation."); }
inline QString selectionChangedStandby() { return QStringLiteral("Playlist selection changed the standby item."); }
inline QString macroOffAirFailed() { return QStringLiteral("ON AIR could not switch OFF AIR."); }
inline QString macroTransportUnsupported() { return QStringLiteral("Macro transport requires a supported file ON AIR."); }
inline QString macroDidNotPause() { return QStringLiteral("ON AIR did not pause."); }
inline QString macroPlayDidNotStart() { return QStringLiteral("ON AIR playback did not start."); }
inline QString macroPlayItemChanged()
{
    return QStringLiteral("The ON AIR item changed while macro playback was starting.");
}
inline QString unknownMacroTransport() { return QStringLiteral("Unknown macro transport operation."); }
inline QString macroOperationPending() { return QStringLiteral("A macro operation is already pending, or its ID is invalid."); }
inline QString macroRateUnsupported() { return QStringLiteral("The macro playback rate or current media is unsupported."); }
inline QString macroRateNotApplied() { return QStringLiteral("The macro playback rate was not applied."); }

} // namespace tarnix::texts
