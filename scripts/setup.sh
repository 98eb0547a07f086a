# shellcheck shell=bash
# The steps that `run` and `test` share; both source this file after setting `root`.
#
# Each step skips at once what is done. One that has work to do names itself on stderr, keeps its
# output in build/log, and ends the whole command with one sentence when it fails.

: "${root:?}"
command_name=./$(basename "$0")

fail() {
    printf '%s: %s\n' "$command_name" "$1" >&2
    exit 1
}

# begin_step LOG TEXT: names the step and starts its log.
begin_step() {
    log=$root/build/log/$1.log
    if ! { mkdir -p "$root/build/log" && : >"$log"; } 2>/dev/null; then
        fail "The folder $root/build cannot be written; check its owner and whether the disk is full."
    fi
    printf '%s …\n' "$2" >&2
}

# logged COMMAND...: runs it with its output in the step's log. Messages are in English so that
# `why` can recognise them; the lock of take_turns is not handed down.
logged() {
    LC_ALL=C.UTF-8 "$@" >>"$log" 2>&1 </dev/null 9>&-
}

# why DEFAULT: what the log says went wrong, as the end of a sentence.
why() {
    if grep -qiE 'No space left on device|not enough (free )?(disk )?space' "$log"; then
        echo "the disk is full; free some space and start again"
    elif grep -qiE 'resol(ve|ving)|Failed to fetch|connection (failed|refused|timed out)|could not connect|unreachable|ENOTFOUND|EAI_AGAIN|ETIMEDOUT' "$log"; then
        echo "the network was not reached; check the connection and start again"
    elif grep -qiE 'Killed signal terminated|cannot allocate memory|virtual memory exhausted' "$log"; then
        echo "the memory did not suffice; close other programs and start again"
    elif grep -qE '(fatal |CMake )?[Ee]rror\b.*:|: error' "$log"; then
        echo "the log begins its complaint with \"$(grep -m1 -E '(fatal |CMake )?[Ee]rror\b.*:|: error' "$log")\""
    else
        echo "$1"
    fi
}

end_step_badly() {
    fail "$1: $(why "read the log") (log: $log)."
}

# take_turns: two commands at once would disturb each other in the build folder.
take_turns() {
    mkdir -p "$root/build" 2>/dev/null || fail "The folder $root/build cannot be made; check the owner of $root and whether the disk is full."
    exec 9<"$root/build"
    if ! flock --nonblock 9; then
        echo "Waiting for another ./run or ./test in this folder …" >&2
        flock 9
    fi
}

# missing_of PACKAGE...: those that are not installed, one a line.
missing_of() {
    local package installed
    installed=$'\n'$(dpkg-query --show --showformat '${db:Status-Status} ${Package}\n' \
        "$@" 2>/dev/null || true)$'\n'
    for package; do
        [[ $installed == *$'\n'"installed $package"$'\n'* ]] || printf '%s\n' "$package"
    done
}

# install_packages LIST...: installs what is missing, as root or through sudo.
install_packages() {
    command -v dpkg-query >/dev/null || return 0  # not Debian: the build names what it lacks
    local package instead attempt wanted=() missing=() apt
    while read -r package _ instead; do
        if [[ -n $package && $package != \#* ]]; then
            [[ -n $instead ]] && command -v "$instead" >/dev/null || wanted+=("$package")
        fi
    done < <(cat "$@")
    readarray -t missing < <(missing_of "${wanted[@]}")
    [[ ${#missing[@]} -gt 0 ]] || return 0

    local for_administrator="Packages are missing that only an administrator can install; ask one to run: apt-get install --no-install-recommends ${missing[*]}"
    apt=(apt-get --yes --quiet -o DPkg::Lock::Timeout=300 -o Acquire::Retries=1)
    if [[ $EUID -eq 0 ]]; then
        apt=(env DEBIAN_FRONTEND=noninteractive "${apt[@]}")
    elif command -v sudo >/dev/null; then
        apt=(sudo DEBIAN_FRONTEND=noninteractive "${apt[@]}")
    else
        fail "$for_administrator"
    fi
    begin_step packages "Installing packages ${missing[*]}"
    for attempt in 1 2; do
        if logged "${apt[@]}" update &&
            logged "${apt[@]}" install --no-install-recommends "${missing[@]}"; then
            readarray -t missing < <(missing_of "${missing[@]}")
            [[ ${#missing[@]} -eq 0 ]] ||
                echo "Under other names here, and asked for again at every start: ${missing[*]}" >&2
            return 0
        fi
        if grep -qE '^(sudo:|Sorry, user)' "$log"; then
            fail "$for_administrator"
        fi
        [[ $attempt -eq 2 ]] || sleep 2
    done
    end_step_badly "Installing the packages failed"
}

# build PRESET TESTS TARGET...: configures where needed and builds; TESTS is ON or OFF.
# A build folder that has its tests keeps them, so that `run` and `test` can take turns cheaply.
build() {
    local preset=$1 tests=$2 folder=$root/build/$1 stamp=$root/build/$1/.configured
    shift 2
    local done_for="" options=()
    [[ -e $stamp && ! $root/CMakePresets.json -nt $stamp ]] && done_for=$(<"$stamp")
    if [[ $done_for != "$root ON" && $done_for != "$root $tests" ]]; then
        begin_step "configure-$preset" "Configuring ($preset)"
        command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
        [[ $done_for == "$root "* ]] || options+=(--fresh)  # a moved tree, or other presets
        logged env -C "$root" cmake --preset "$preset" -DQUILLMERE_TESTS="$tests" "${options[@]}" ||
            end_step_badly "Configuring failed"
        echo "$root $tests" >"$stamp"
    fi
    if [[ $(ninja -C "$folder" -n "$@" 2>&1 9>&-) != *"no work to do"* ]]; then
        begin_step "build-$preset" "Building ($preset)"
        logged ninja -C "$folder" "$@" || end_step_badly "Building failed"
    fi
}

# fetch_networks PRESET: compiled networks beside the preset's programs. The fetching script says
# nothing when all of them are there, so the step names itself at the script's first line.
fetch_networks() {
    local line
    log=
    shopt -s lastpipe  # so that `log` is known after the pipe
    if ! "$root/scripts/fetch-networks" "$root/build/$1/bin/quillmere-modelc" \
        "$root/build/$1/share/quillmere/Models" 2>&1 </dev/null 9>&- | while IFS= read -r line; do
        [[ -n $log ]] || begin_step networks "Fetching the networks"
        printf '%s\n' "$line" >>"$log"
    done; then
        [[ -n $log ]] || fail "Fetching the networks failed without a word; start again."
        line=$(sed -n 's/^fetch-networks: //p' "$log" | tail -n 1)
        [[ -z $line ]] || fail "${line%.} (log: $log)."
        end_step_badly "Fetching the networks failed"
    fi
}
