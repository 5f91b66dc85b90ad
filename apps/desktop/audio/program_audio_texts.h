#pragma once

// Texts of the program audio output, word for word: the status keys with
// their English texts, and the log warnings.
namespace tarnix::program_audio_text {

inline constexpr char kStatusApplying[] = "settings.output.applying";
inline constexpr char kStatusFailed[] = "settings.output.failed";
inline constexpr char kStatusApplied[] = "settings.output.applied";
inline constexpr char kStatusPending[] = "settings.output.pending";

inline constexpr char kApplyingText[] = "Applying ON AIR output device\u2026";
inline constexpr char kFailedText[] =
    "Could not apply the ON AIR output device. Select an available device and try again.";
inline constexpr char kAppliedText[] = "ON AIR output device applied.";
inline constexpr char kPendingText[] = "Waiting until ON AIR and BGM are stopped.";

inline constexpr char kRegisterFailed[] = "Failed to register the PROGRAM audio transport";
inline constexpr char kCreateFailed[] = "Failed to create dual-deck Program output:";
inline constexpr char kLatencyFailed[] = "Could not update PROGRAM audio latency";
inline constexpr char kWorkerFailed[] = "Could not start program audio device worker:";
inline constexpr char kReleaseLabel[] = "program output";
inline constexpr char kUnsafeRelease[] =
    "Skipping unsafe Program audio output release after shutdown could not be confirmed";

} // namespace tarnix::program_audio_text
