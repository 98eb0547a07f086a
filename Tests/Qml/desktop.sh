#!/usr/bin/env bash
# Runs a script of Python over the real application, of an edition that has every way out, on a
# display and a bus of its own and in an empty home: `desktop.sh SCRIPT QUILLMERE`.
set -euo pipefail
export HOME
HOME=$(mktemp -d)
trap 'rm -rf "$HOME"' EXIT
export XDG_RUNTIME_DIR=$HOME/run QT_QUICK_BACKEND=software QT_QPA_PLATFORM=xcb \
    QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 QUILLMERE_LANGUAGE=en
unset XDG_DATA_HOME XDG_CACHE_HOME XDG_CONFIG_HOME XDG_STATE_HOME WAYLAND_DISPLAY
mkdir -m 700 "$XDG_RUNTIME_DIR"
build=$(dirname "$(dirname "$(realpath "$2")")")
mkdir -p "$HOME/edition/bin"
cp "$2" "$HOME/edition/bin/quillmere"
cp -rs "$build/share" "$build/lib" "$HOME/edition"
rm "$HOME/edition/share/quillmere/ProjectSettings.json"
cat >"$HOME/edition/share/quillmere/ProjectSettings.json" <<END
{
  "inquiryEndpoint": "https://127.0.0.1:9",
  "supportAddress": "help@store.example",
  "storeLink": "https://store.example/quillmere",
  "makerStorePage": "https://store.example/maker",
  "reviewLink": "https://store.example/review"
}
END
# Debian's own Python, which its bindings belong to.
xvfb-run --auto-servernum --server-args="-screen 0 1120x780x24 -nolisten tcp" \
    dbus-run-session -- /usr/bin/python3 "$1" "$HOME/edition/bin/quillmere" 2>"$HOME/log" ||
    { cat "$HOME/log" >&2; exit 1; }
