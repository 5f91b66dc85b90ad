# Generates the small media files the tests play. Each file is written under a
# temporary name and renamed when complete, so an interrupted run never leaves
# a truncated file that a later run would take as finished.
if(NOT OUT_DIR)
  message(FATAL_ERROR "OUT_DIR is required")
endif()
file(MAKE_DIRECTORY "${OUT_DIR}")
find_program(GST_LAUNCH gst-launch-1.0 REQUIRED)

set(video_320 "video/x-raw,width=320,height=180,framerate=30/1")
set(audio_48k "audio/x-raw,rate=48000,channels=2")

# name | pipeline (the output is written by "filesink location=@OUT@")
set(media_jobs
  "h264-aac.mp4|videotestsrc num-buffers=60 pattern=smpte ! ${video_320} ! openh264enc gop-size=30 ! h264parse ! mux. audiotestsrc num-buffers=94 samplesperbuffer=1024 ! ${audio_48k} ! avenc_aac ! aacparse ! mux. mp4mux name=mux ! filesink location=@OUT@"
  "h264-aac-3s.mp4|videotestsrc num-buffers=90 pattern=ball ! ${video_320} ! openh264enc gop-size=30 ! h264parse ! mux. audiotestsrc num-buffers=141 samplesperbuffer=1024 ! ${audio_48k} ! avenc_aac ! aacparse ! mux. mp4mux name=mux ! filesink location=@OUT@"
  "h264-video-only.mp4|videotestsrc num-buffers=30 pattern=red ! ${video_320} ! openh264enc gop-size=30 ! h264parse ! mp4mux ! filesink location=@OUT@"
  "aac-audio-only.m4a|audiotestsrc num-buffers=47 samplesperbuffer=1024 ! ${audio_48k} ! avenc_aac ! aacparse ! mp4mux ! filesink location=@OUT@"
  "vp8-vorbis.webm|videotestsrc num-buffers=30 pattern=green ! ${video_320} ! vp8enc deadline=1 ! mux. audiotestsrc num-buffers=47 samplesperbuffer=1024 ! ${audio_48k} ! audioconvert ! vorbisenc ! mux. webmmux name=mux ! filesink location=@OUT@"
  "h264-aac-25fps-12s.mp4|videotestsrc num-buffers=300 pattern=ball ! video/x-raw,width=320,height=180,framerate=25/1 ! openh264enc gop-size=25 ! h264parse ! mux. audiotestsrc num-buffers=563 samplesperbuffer=1024 ! ${audio_48k} ! avenc_aac ! aacparse ! mux. mp4mux name=mux ! filesink location=@OUT@"
  "tone-1s.wav|audiotestsrc num-buffers=47 samplesperbuffer=1024 ! ${audio_48k} ! wavenc ! filesink location=@OUT@"
  "solid-red-4s.mp4|videotestsrc num-buffers=120 pattern=solid-color foreground-color=0xffff0000 ! ${video_320} ! openh264enc gop-size=30 ! h264parse ! mux. audiotestsrc num-buffers=188 samplesperbuffer=1024 ! ${audio_48k} ! avenc_aac ! aacparse ! mux. mp4mux name=mux ! filesink location=@OUT@"
  "solid-blue-4s.mp4|videotestsrc num-buffers=120 pattern=solid-color foreground-color=0xff0000ff ! ${video_320} ! openh264enc gop-size=30 ! h264parse ! mux. audiotestsrc num-buffers=188 samplesperbuffer=1024 ! ${audio_48k} ! avenc_aac ! aacparse ! mux. mp4mux name=mux ! filesink location=@OUT@"
  "still.png|videotestsrc num-buffers=1 pattern=blue ! video/x-raw,width=320,height=180 ! pngenc ! filesink location=@OUT@"
)

foreach(job IN LISTS media_jobs)
  string(FIND "${job}" "|" bar)
  string(SUBSTRING "${job}" 0 ${bar} name)
  math(EXPR start "${bar} + 1")
  string(SUBSTRING "${job}" ${start} -1 pipeline)
  set(target "${OUT_DIR}/${name}")
  if(EXISTS "${target}")
    continue()
  endif()
  set(partial "${OUT_DIR}/.partial-${name}")
  string(REPLACE "@OUT@" "${partial}" pipeline "${pipeline}")
  separate_arguments(args UNIX_COMMAND "${pipeline}")
  execute_process(COMMAND ${GST_LAUNCH} -q -e ${args}
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 120)
  if(NOT rc EQUAL 0 OR NOT EXISTS "${partial}")
    file(REMOVE "${partial}")
    message(FATAL_ERROR "Could not generate ${name}: ${rc}\n${out}\n${err}")
  endif()
  file(RENAME "${partial}" "${target}")
  message(STATUS "generated ${name}")
endforeach()
