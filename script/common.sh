# Shared by the bash scripts of this project. Each sources it first:
#
#     source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
#
# It changes to the top folder of the checkout and sets `name` to the calling script's name, with which messages begin.
# The comment at the top of a script is its usage: --help as the first word prints it and ends the script.
# This file must work with macOS's Bash 3.2, which has no mapfile and fails at "${array[@]}" of an empty array.
# shellcheck shell=bash
set -euo pipefail

name=$(basename -- "$0")
calling_script=$(cd -- "$(dirname -- "$0")" && pwd)/$name
cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."

# Prints the calling script's comment.
usage() {
    awk 'NR > 1 && !/^#/ { exit } NR > 1 { sub(/^# ?/, ""); print }' "$calling_script"
}

# Ends the calling script because of a wrong word on its command line. Call it before any work:
# refuse MESSAGE
refuse() {
    printf '%s: %s; nothing was done. --help shows the usage.\n' "$name" "$1" >&2
    exit 2
}

# Ends the calling script because something failed: fail LINE...
fail() {
    printf "$name: %s\n" "$@" >&2
    exit 1
}

# Refuses every word. For a script without options.
takes_no_words() {
    [[ $# -eq 0 ]] || refuse "unknown word: $1"
}

# Ends a script that works only on Debian, if this is another system.
needs_debian() {
    [[ $(uname) == Linux ]] || fail "this needs Debian 12; nothing was done. On a Mac, script/build makes the app."
}

# Accepts only CTest's options that select the tests or the output. CTest itself ignores unknown words and runs every
# test.
takes_ctest_options() {
    while (($#)); do
        case $1 in
            -R | -E | -L | -LE | -I | -j | --parallel | --tests-regex | --exclude-regex | --label-regex | \
                --label-exclude | --tests-information | --fixture-exclude-any | --repeat | --timeout | --stop-time | \
                --test-load | --output-junit | --output-log | -O)
                (($# >= 2)) || refuse "$1 needs a value"
                shift
                ;;
            -N | -V | -VV | -Q | -F | --show-only | --show-only=json-v1 | --verbose | --extra-verbose | --quiet | \
                --output-on-failure | --rerun-failed | --stop-on-failure | --progress | --print-labels | \
                --schedule-random | -j[0-9]* | --parallel=* | --repeat=*) ;;
            *) refuse "unknown word: $1" ;;
        esac
        shift
    done
}

# Prints the command of one of LLVM's tools in the version that the project uses: llvm_tool TOOL
llvm_tool() {
    local version
    version=$(<script/llvm-version)
    if command -v "$1-$version" >/dev/null; then
        printf '%s\n' "$1-$version"
    elif "$1" --version 2>/dev/null | grep -q " version $version\."; then
        printf '%s\n' "$1"
    else
        fail "$1 of LLVM $version is missing; nothing was changed." "On Debian, script/bootstrap installs it."
    fi
}

[[ ${1:-} != --help && ${1:-} != -h ]] || {
    usage
    exit 0
}
