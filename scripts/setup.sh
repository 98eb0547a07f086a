# shellcheck shell=bash
# The set-up that ./run and ./test share; to be sourced. Each step skips at once what is done.
#
# Every step that has something to do names itself; a failing one ends the program with one
# sentence, and leaves its output in build/log. The caller sets `program`, its own name, before.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
logs=$root/build/log

fail() {
    echo "${program:?}: $*" >&2
    exit 1
}

# step NAME "What is being done" "What to do if it fails" COMMAND...
step() {
    local log=$logs/$1.log doing=$2 remedy=$3
    shift 3
    mkdir -p "$logs" || fail "The folder $logs can't be made; check the disk and its permissions."
    echo "$doing ..." >&2
    "$@" </dev/null >"$log" 2>&1 || fail "$doing failed. $remedy (Details: $log)"
}

as_root() {
    if [[ $(id -u) == 0 ]]; then "$@"; else sudo "$@"; fi
}

# install_packages LIST...: each list is a file of package names, "#" begins a comment.
install_packages() {
    local wanted missing
    wanted=$(sed 's/#.*//' "$@" | tr -s ' \n' '\n' | sort -u | sed '/^$/d')
    # Whoever brought an npm of their own needs not Debian's, which brings 400 packages along.
    if command -v npm >/dev/null; then wanted=$(grep -vx npm <<<"$wanted"); fi
    # shellcheck disable=SC2086,SC2016
    missing=$(comm -23 <(echo "$wanted") <(dpkg-query -W -f '${Status} ${Package}\n' $wanted \
        2>/dev/null | sed -n 's/^install ok installed //p' | sort -u) | tr '\n' ' ')
    [[ -n $missing ]] || return 0

    command -v apt-get >/dev/null ||
        fail "Quillmere's set-up needs Debian's apt-get; elsewhere install these first: $missing"
    if [[ $(id -u) != 0 ]] && ! command -v sudo >/dev/null; then
        fail "Packages are missing, and only an administrator can install them: apt-get install $missing"
    fi
    export DEBIAN_FRONTEND=noninteractive
    local -a apt=(as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y
        -o Acquire::Retries=3 -o DPkg::Lock::Timeout=120)
    step package-lists "Updating the lists of packages" \
        "Check the network and run this again." "${apt[@]}" update
    # shellcheck disable=SC2086
    step packages "Installing packages" \
        "Check the network and the free disk space, and run this again." \
        "${apt[@]}" install --no-install-recommends $missing
}

# build PRESET TARGET...: configures where needed, and builds.
build() {
    local preset=$1 folder=$root/build/$1
    shift
    local -a launcher=()
    if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
    if [[ ! -f $folder/build.ninja ]]; then
        step "configure-$preset" "Configuring ($preset)" "Run this again after 'rm -r build'." \
            env -C "$root" cmake --preset "$preset" "${launcher[@]}"
    fi
    # Asked first, so that nothing is said where there is nothing to build.
    if ! ninja -C "$folder" -n "$@" 2>/dev/null | grep -q 'no work to do'; then
        step "build-$preset" "Building ($preset)" "The compiler's words are in the log." \
            ninja -C "$folder" "$@"
    fi
}

# fetch_networks PRESET: the networks lie beside that build's programs.
fetch_networks() {
    "$root/scripts/fetch-networks" "$root/build/release/bin/quillmere-modelc" \
        "$root/build/$1/share/quillmere/Models" </dev/null || exit 1
}
