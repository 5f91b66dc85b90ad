#pragma once

// Operator and log texts of a playout deck. Operators and support staff
// search for them, so they never change with a refactoring.
namespace tarnix::deck_text {

inline constexpr char kNoStandbyPlayer[] = "No standby player is available.";
inline constexpr char kStopPreviousInput[] =
    "Could not stop the previous input on the standby player.";
inline constexpr char kUvcUnavailable[] = "The shared UVC session is unavailable.";
inline constexpr char kPowerPointUnavailable[] = "The PowerPoint source manager is unavailable.";
inline constexpr char kPdfUnavailable[] = "The PDF source manager is unavailable.";
inline constexpr char kMediaOffline[] =
    "Media offline: the file is missing or did not respond in time.";
inline constexpr char kPreparationCancelled[] = "Media preparation was cancelled.";
inline constexpr char kNoVideoFrame[] = "No video frame arrived before the preparation deadline.";
inline constexpr char kStillFilter[] = "Could not create the still image filter.";
inline constexpr char kPreparePipeline[] = "Could not prepare the media pipeline.";
inline constexpr char kNoStreams[] = "No playable video or audio streams were found.";
inline constexpr char kPointsExceedDuration[] = "The In or Out point exceeds the media duration.";
inline constexpr char kPreparePoints[] = "Could not prepare the In/Out points.";
inline constexpr char kReplaceStandby[] =
    "Could not safely replace the standby player. Current ON AIR output continues.";

inline constexpr char kScaletempoMissing[] =
    "Required playback-rate audio element scaletempo is unavailable";
inline constexpr char kVideoElementsMissing[] = "Required video appsink elements are unavailable";
inline constexpr char kVideoOutputParse[] = "Failed to create deck video appsink output:";
inline constexpr char kAudioOutputParse[] = "Failed to create deck audio output:";
inline constexpr char kRetainResources[] = "Retaining deck resources without confirmed shutdown";
inline constexpr char kPlaybinLabel[] = "dual-deck playbin";

} // namespace tarnix::deck_text
