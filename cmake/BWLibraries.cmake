# SPDX-License-Identifier: GPL-3.0-or-later
# Writes down which libraries the program is linked with, in which versions and under which licences.

# The part of FFmpeg whose number tells the release; FFmpeg itself has none in pkg-config.
set(ffmpeg_version "libavcodec ${ffmpeg_libavcodec_VERSION}")

find_path(YUV_INCLUDE libyuv/version.h REQUIRED)
file(STRINGS ${YUV_INCLUDE}/libyuv/version.h yuv_version REGEX "define LIBYUV_VERSION")
string(REGEX REPLACE ".*LIBYUV_VERSION ([0-9]+).*" "\\1" yuv_version "${yuv_version}")

configure_file(${PROJECT_SOURCE_DIR}/resources/libraries.json.in ${PROJECT_BINARY_DIR}/resources/libraries.json @ONLY)
