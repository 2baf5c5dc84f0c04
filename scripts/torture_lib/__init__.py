"""Torture run: every writing command of pelorin-cli over every sample, checked by
independent readers (exiftool, ffprobe/ffmpeg, mutagen, plain Python parsers)."""
