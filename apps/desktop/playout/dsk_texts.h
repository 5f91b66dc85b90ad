#pragma once

// Operator and log texts of the DSK layer, word for word: operators and
// support staff search for them. The operator texts go with their
// catalogue keys.
namespace tarnix::dsk_text {

// Log texts of the DSK decks.
inline constexpr char kNoPlaybin[] = "Could not create the DSK playbin.";
inline constexpr char kElementsUnavailable[] = "Required DSK video appsink elements are unavailable";
inline constexpr char kVideoOutputParse[] = "Failed to create DSK video appsink output:";
inline constexpr char kIsolationLog[] = "DSK audio isolation could not be enforced";
inline constexpr char kUnsafeRelease[] = "Retaining DSK producer references after unconfirmed shutdown";
inline constexpr char kStopWorker[] = "Could not start the DSK stop worker.";
inline constexpr char kPlaybinLabel[] = "DSK playbin";
inline constexpr char kUnknownError[] = "Unknown DSK GStreamer error";
inline constexpr char kConnectFailed[] = "Failed to connect DSK";

// Operator texts: key and English text.
struct Text {
    const char *key;
    const char *english;
};

inline constexpr Text kIsolation{"program.dsk.audio_isolation_failed", "DSK audio isolation could not be enforced."};
inline constexpr Text kBgmMode{"program.warning.bgm_mode_dsk", "Items of a BGM playlist play on the BGM player, not in DSK."};
inline constexpr Text kInvalidItem{"program.dsk.invalid_item", "Select a valid playlist item to send to DSK."};
inline constexpr Text kInvalidRange{"program.dsk.invalid_range", "The DSK In or Out point is invalid."};
inline constexpr Text kStillStopping{"program.dsk.still_stopping", "The previous DSK source is still stopping."};
inline constexpr Text kStopFailed{"program.dsk.stop_failed", "Could not stop the DSK pipeline."};
inline constexpr Text kPrepareFailed{"program.dsk.prepare_failed", "Could not prepare the DSK item."};
inline constexpr Text kMediaOffline{"program.dsk.media_offline",
                                    "Media offline: the file is missing or did not respond in time."};
inline constexpr Text kCancelled{"program.dsk.cancelled", "Media preparation was cancelled."};
inline constexpr Text kNoVideo{"program.dsk.no_video", "No playable video stream was found in the DSK item."};
inline constexpr Text kNoFrame{"program.dsk.no_frame", "No DSK frame arrived before the preparation deadline."};
inline constexpr Text kDisplayFailed{"program.dsk.display_failed", "Could not display DSK."};
inline constexpr Text kOffFailed{"program.dsk.off_failed", "Could not turn DSK off."};
inline constexpr Text kPauseFailed{"program.dsk.pause_failed", "Could not pause the DSK media."};
inline constexpr Text kPlayFailed{"program.dsk.play_failed", "Could not play the DSK media."};
inline constexpr Text kEndStopFailed{"program.dsk.end_mode_stop_failed", "Could not execute DSK End Mode \"Stop\"."};
inline constexpr Text kEndPauseFailed{"program.dsk.end_mode_pause_failed",
                                      "Could not execute DSK End Mode \"Pause\"."};
inline constexpr Text kEndRepeatFailed{"program.dsk.end_mode_repeat_failed",
                                       "Could not execute DSK End Mode \"Repeat\"."};
inline constexpr Text kEndNextFailed{"program.dsk.end_mode_next_failed", "Could not execute DSK End Mode \"Next\"."};
inline constexpr Text kEndGotoFailed{"program.dsk.end_mode_goto_failed", "Could not execute DSK End Mode \"GOTO\"."};
inline constexpr Text kNoNext{"program.dsk.no_next", "No eligible next DSK playlist item is available."};
inline constexpr Text kNoGoto{"program.dsk.no_goto", "No eligible DSK GOTO destination is selected or available."};
inline constexpr Text kReturnFailed{"program.dsk.return_failed", "Could not return the DSK media to its In point."};
inline constexpr Text kRepeatFailed{"program.dsk.repeat_failed", "Could not start repeated DSK playback."};
inline constexpr Text kStopAtInFailed{"program.dsk.stop_at_in_failed",
                                      "Could not stop the DSK media at its In point."};
inline constexpr Text kCompositionFailed{"program.dsk.composition_failed",
                                         "GPU composition of the DSK frame failed. Base video will continue."};
inline constexpr Text kFrameDisplayFailed{"program.dsk.frame_display_failed", "Could not display the DSK GPU frame."};
inline constexpr Text kFramesFailed{"program.dsk.frames_failed",
                                    "Could not retrieve video frames from the DSK media."};
inline constexpr Text kPlaybackFailed{"program.dsk.playback_failed", "DSK playback failed."};

} // namespace tarnix::dsk_text
