# shellcheck shell=bash
# What the scripts say: progress on standard output, failures on standard error with what to do about them.

# say <text>: one line of progress.
say() {
  printf '%s\n' "$*"
}

# heading <text>: the start of a stage.
heading() {
  printf '\n== %s\n' "$*"
}

# fail <what went wrong> <what to do>: ends the script with status 1.
fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  printf '%s: to mend it: %s\n' "${0##*/}" "$2" >&2
  exit 1
}

# print_help: the comment at the head of the calling script, without its marks.
print_help() {
  awk 'NR > 1 && !/^#/ { exit } NR > 1 { sub(/^# ?/, ""); print }' "$0"
}
