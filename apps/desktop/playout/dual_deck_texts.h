#pragma once

// Operator and log texts of the dual-deck player, word for word: operators
// and support staff search for them.
namespace tarnix::dual_deck_text {

inline constexpr char kCompositorStart[] = "Failed to start the ON AIR GPU compositor";
inline constexpr char kUvcManagerMissing[] = "UVC source session manager is unavailable";
inline constexpr char kConnectDeck[] = "Failed to connect Deck";
inline constexpr char kConnectDeckTail[] = "to the ON AIR GPU compositor";
inline constexpr char kLatency[] = "Could not update audio pipeline latency";
inline constexpr char kUnknownError[] = "Unknown error";
inline constexpr char kUnknownGstError[] = "Unknown GStreamer error";
inline constexpr char kStopPrevious[] = "Could not stop the previous ON AIR deck.";
inline constexpr char kStopPreviousCrossfade[] =
    "Could not stop the previous ON AIR deck after the crossfade.";
inline constexpr char kReleaseStandby[] = "Could not release the standby player.";
inline constexpr char kReplaceStandby[] =
    "Could not safely replace the standby player. Current ON AIR output continues.";
inline constexpr char kGpuOutputError[] = "An error occurred in the ON AIR GPU output.\n";
inline constexpr char kCrossfadeRunning[] =
    "Could not prepare the standby player while a crossfade is running.";

} // namespace tarnix::dual_deck_text
