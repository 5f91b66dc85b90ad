#pragma once

// Texts of the program picture: operator messages and log lines, fixed.
namespace tarnix::program_text {

inline constexpr char kRendererFailed[] = "Program GPU renderer failed to draw an output frame.";
inline constexpr char kPresenterFailed[] = "Program GPU presenter stopped after a fatal error.";
inline constexpr char kBusErrorPrefix[] = "Program GPU output ERROR from ";
inline constexpr char kInvalidGeometry[] =
    "Program GPU compositor received invalid output windows or geometry";
inline constexpr char kParseError[] = "Program GPU output parse error: %1";
inline constexpr char kNoPlaying[] = "Program GPU output failed to enter PLAYING";
inline constexpr char kNoFirstPresent[] =
    "Program GPU output timed out before its first Fullscreen present";
inline constexpr char kPresenterNotReady[] = "Program presenter thread failed to initialize";
inline constexpr char kStarted[] = "Program GPU compositor started: %1x%2/60, display refresh=%3/%4";
inline constexpr char kLayerGeometry[] = "Could not read Program layer video geometry";
inline constexpr char kPipelineLabel[] = "Program GPU output";

} // namespace tarnix::program_text
