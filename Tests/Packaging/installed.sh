#!/usr/bin/env bash
# What an installation lays down works from wherever it is put, and the desktop can read its entry:
# `installed.sh BUILD`.
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home QT_QPA_PLATFORM=offscreen
unset XDG_DATA_HOME XDG_CACHE_HOME XDG_CONFIG_HOME XDG_STATE_HOME QUILLMERE_LIBRARY_FOLDER
mkdir "$HOME"

cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/prefix"
prefix=$work/prefix

entry=$prefix/share/applications/quillmere.desktop
desktop-file-validate "$entry"
program=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$entry")
icon=$(sed -n 's/^Icon=//p' "$entry")
test -x "$prefix/bin/$program"
test -f "$prefix/share/icons/hicolor/scalable/apps/$icon.svg"
"$prefix/bin/$program" --version

ffmpeg -loglevel error -f lavfi -i testsrc=size=64x48:rate=10:duration=0.5 "$work/clip.mp4"
"$prefix/bin/quillmere-cli" enhance "$prefix/share/quillmere/Samples/chelsea.png" \
    --style superSpeed --quiet -o "$work/picture.jpg"
"$prefix/bin/quillmere-cli" video "$work/clip.mp4" --style superSpeed --quiet -o "$work/clip.mov"
test -s "$work/picture.jpg"
test -s "$work/clip.mov"
