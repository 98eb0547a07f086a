#!/usr/bin/env bash
# A user's first minute in the real application: open the photo sample, convert it, drag the
# divider, save, and find the result in the library. `end-to-end.sh QUILLMERE QUILLMERE-CLI`.
set -euo pipefail
application=$1
cli=$2
export HOME
HOME=$(mktemp -d)
export XDG_RUNTIME_DIR=$HOME/run QT_QUICK_BACKEND=software QT_QPA_PLATFORM=xcb
unset XDG_DATA_HOME XDG_CACHE_HOME XDG_CONFIG_HOME XDG_STATE_HOME WAYLAND_DISPLAY \
    DBUS_SESSION_BUS_ADDRESS
mkdir -m 700 "$XDG_RUNTIME_DIR"
trap 'kill "$server" 2>/dev/null; rm -rf "$HOME"' EXIT

exec 3<>"$HOME/display"
Xvfb -displayfd 3 -screen 0 1120x780x24 -nolisten tcp 2>/dev/null &
server=$!
for _ in $(seq 100); do
    [[ -s $HOME/display ]] && break
    sleep 0.1
done
DISPLAY=:$(head -1 "$HOME/display")
export DISPLAY

"$application" 2>"$HOME/log" &
running=$!
xdotool search --sync --onlyvisible --name Quillmere >/dev/null
click() { xdotool mousemove "$1" "$2" click 1; }
picture() { import -window root "$HOME/$1.png"; }
# until_true COMMAND...: up to a minute.
until_true() {
    for _ in $(seq 300); do
        "$@" && return
        sleep 0.2
    done
    echo "never came: $*" >&2
    cat "$HOME/log" >&2
    return 1
}
differs() {
    picture now
    ! cmp -s "$HOME/$1.png" "$HOME/now.png"
}
opened() {
    click 800 270
    sleep 0.5
    # The button to save is blue.
    picture now
    [[ $(convert "$HOME/now.png" -crop 1x1+900+722 txt:-) == *"#1F62D8"* ]]
}
saved() {
    click 970 735
    sleep 0.5
    "$cli" library --json | grep -q '"width":1804,"height":1200'
}

until_true opened
click 950 170
sleep 1
picture before
xdotool mousemove 372 400 mousedown 1
for x in $(seq 360 -20 200); do xdotool mousemove "$x" 400; done
xdotool mouseup 1
until_true differs before
until_true saved
[[ $(find "$HOME/Pictures/Quillmere" -name 'Quillmere *.jpg' | wc -l) -ge 1 ]]
kill "$running"
wait "$running" || true
"$cli" library --json
