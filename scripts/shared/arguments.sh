# shellcheck shell=bash
# How scripts look at their arguments, which they do before anything is installed, configured or built. For each of them
# to begin with:
#
#     . "$(dirname "$0")/shared/arguments.sh"
#
# The script's first comment is its help. The line "Usage: ..." in it is all that it accepts.

# The script and the project's root, whatever the current directory is later.
script=$(realpath -- "$0")
root=$(dirname "$(dirname "$script")")

# The first comment.
usage() {
    sed -n '2,${/^#/!q;s/^# \{0,1\}//p}' "$script"
}

# wrong_usage TEXT [ACCEPTED]: ends the script with one line, of what is wrong and what would be right.
wrong_usage() {
    local accepted
    accepted=${2-$(usage | sed -n '/^Usage: /{s/^U/u/;s/  .*//;p}')}
    echo "${script##*/}: $1; $accepted" >&2
    exit 2
}

# unknown_argument ARGUMENT
unknown_argument() {
    wrong_usage "unknown argument \"$1\""
}

# require_choice KIND WORD CHOICE...: the word must be one of the choices.
require_choice() {
    local kind=$1 word=$2 choice choices
    shift 2
    for choice; do
        [ "$word" != "$choice" ] || return 0
    done
    printf -v choices ', %s' "$@"
    wrong_usage "there is no $kind \"$word\"" "choose from ${choices:2}"
}

# require_number OPTION VALUE LEAST [MOST]: the value must be a whole number from LEAST to MOST.
require_number() {
    if [[ $2 =~ ^(0|[1-9][0-9]{0,8})$ ]] && [ "$2" -ge "$3" ] && [ "$2" -le "${4-$2}" ]; then
        return 0
    fi
    wrong_usage "$1 doesn't take \"$2\"" "it takes a whole number from $3 $([ $# -gt 3 ] && echo "to $4" || echo on)"
}

# The names of the presets that the suite can be run with, one a line. In CMakePresets.json each has a line of its own.
test_presets() {
    sed -n '/"testPresets"/,$ {/"hidden"/d;s/.*{"name": "\([^"]*\)".*/\1/p}' "$root/CMakePresets.json"
}

# setup_option_of PRESET: what scripts/setup must be asked for, beside what every build needs.
setup_option_of() {
    case $1 in
    asan) echo --sanitizers ;;
    arm64) echo --arm64 ;;
    esac
}
