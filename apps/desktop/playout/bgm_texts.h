#pragma once

// Operator and log texts of the BGM player, word for word: operators and
// support staff search for them. The operator texts go with their
// catalogue keys.
namespace tarnix::bgm_text {

// The deck's log texts.
inline constexpr char kNoPlaybin[] = "Could not create the BGM playbin.";
inline constexpr char kAudioOutputParse[] = "Failed to create BGM audio output:";
inline constexpr char kUnsafeRelease[] =
    "Skipping unsafe BGM playback release after shutdown could not be confirmed";
inline constexpr char kReleaseRefused[] = "Could not safely release the BGM player.";
inline constexpr char kNoAudio[] = "The BGM item has no audio stream.";
inline constexpr char kPlaybinLabel[] = "BGM playbin";

// Operator texts: key and English text.
struct Text {
    const char *key;
    const char *english;
};

inline constexpr Text kNoPlayableItem{"program.bgm.no_playable_item",
                                      "No playable item was found in the current BGM playlist."};
inline constexpr Text kStopFailed{"program.bgm.stop_failed", "BGM could not be stopped. Press STOP again to reset it."};
inline constexpr Text kAudioOutputChanging{
    "program.bgm.audio_output_changing",
    "ON AIR audio output is being prepared or changed. Press BGM PLAY again after it finishes."};
inline constexpr Text kAudioOutputUnavailable{
    "program.bgm.audio_output_unavailable",
    "ON AIR audio output is unavailable. Check audio output settings and press BGM PLAY again after recovery."};
inline constexpr Text kPlayFailed{"program.bgm.play_failed", "BGM playback failed."};
inline constexpr Text kTransitionFailed{"program.bgm.transition_failed",
                                        "The BGM item transition could not be completed."};
inline constexpr Text kSkippedItem{"program.bgm.skipped_item", "Skipped BGM item: %1"};
inline constexpr Text kCurrentItem{"program.bgm.current_item", "Current BGM: %1"};
inline constexpr Text kNoItem{"program.bgm.no_item", "No BGM item"};
inline constexpr Text kHiddenAfterStop{"program.bgm.controls_hidden_after_stop",
                                       "The BGM controls will be hidden after BGM stops."};

// The states the panel shows.
inline constexpr Text kStateStopped{"program.bgm.state.stopped", "STOPPED"};
inline constexpr Text kStateLoading{"program.bgm.state.loading", "LOADING"};
inline constexpr Text kStatePlaying{"program.bgm.state.playing", "PLAYING"};
inline constexpr Text kStatePaused{"program.bgm.state.paused", "PAUSED"};
inline constexpr Text kStateFadeIn{"program.bgm.state.fade_in", "FADE IN"};
inline constexpr Text kStateFadeOut{"program.bgm.state.fade_out", "FADE OUT"};
inline constexpr Text kStateFadedOut{"program.bgm.state.faded_out", "FADED OUT (VOLUME 0)"};
inline constexpr Text kStateError{"program.bgm.state.error", "ERROR"};

} // namespace tarnix::bgm_text
