# shellcheck shell=bash
# The runs whose results must be the same bytes from every build. Needs messages.sh; the working directory is the project's
# top.

# What the runs need; a build folder has the executables in bin/.
run_models=(railway queue service-laws workstation-cluster polling kanban)

# One run a line: the value of SIMTEST (- for unset), the model, then the options, to which `-a values.csv -b values.bin` is
# added. Together they have every option of the command line, both kinds of run, the three generators, each way of building
# the connectivity list, seeds, overrides, traces to files and to standard output, and a manager: `-w` is answered by one.
runs=(
  "- railway -N 200"
  "0 railway -N 100 -r 1 -s 7 -c 3 -O s:nTrains:2:d:netNotDeliveryProb:0.1"
  "1 railway -N 100 -n 7 -r 2 -s 8 -O s:nTrains:5:d:netNotDeliveryProb:0.5"
  "2 railway -N 40 -r 0 -s 9 -O s:nTrains:20:d:netNotDeliveryProb:0.7"
  "7 railway -N 20 -r 1 -O s:nTrains:5"
  "2 railway -N 60 -r 1 -s 11 -O s:nTrains:20:d:netNotDeliveryProb:0.9:d:integrityNotConfirmedProb:0.3"
  "0 railway -N 40 -r 2 -s 12 -O s:nTrains:20:d:netNotDeliveryProb:0.9"
  "1 railway -N 100 -r 0 -s 13 -O s:nTrains:2:d:netNotDeliveryProb:0.7:d:positionUpdatePeriod:0.3"
  "- railway -N 3000 -n 100 -r 2 -s 0 -O d:netNotDeliveryProb:0.9"
  "2 railway -N 5 -m -x -l 4 -f trace -s 99 -O s:nTrains:5:d:netNotDeliveryProb:0.5"
  "- railway -N 120 -n 20 -w -p 21000 -c 9 -O d:netNotDeliveryProb:0.5"
  "- queue -N 500 -t 1 -e 2 -s 4 -r 1"
  "- queue -N 3 -m -l 2"
  "- queue -N 2 -x -l 3 -e 1"
  "- service-laws -N 30 -e 16 -r 2"
  "1 service-laws -t 0 -N 40 -n 3 -e 8"
  "- service-laws -t 0 -N 40 -e 15 -r 1 -s 3"
  "- workstation-cluster -N 60 -e 1 -s 21"
  "0 polling -t 0 -N 20 -e 1 -s 5 -r 2"
  "- kanban -N 40 -e 3 -O d:outRate:1.1"
)

# The command lines together must have every option.
require_every_option() {
  local letter
  for letter in N O a b c e f l m n p r s t w x; do
    [[ " ${runs[*]} -a -b" == *" -$letter"* ]] ||
      fail "no run has the option -$letter" "put it into a run of scripts/lib/runs.sh"
  done
}

# record_runs <executables> <folder> [<command>...]: every run, each in a folder of its own, which then holds all that it
# wrote and, in stdout, what it printed, without what differs from run to run. The executables are given as a path with % in
# the place of the model; a command, such as Wine, stands ahead of them.
record_runs() {
  local executables=$1 folder=$2 number=0 run simtest model options
  shift 2
  for run in "${runs[@]}"; do
    number=$((number + 1))
    mkdir -p "$folder/$number"
    read -r simtest model options <<< "$run"
    # shellcheck disable=SC2086  # the options are words
    record_run "$folder/$number" "$simtest" "$@" "${executables/\%/"$model"}" $options -a values.csv -b values.bin
  done
}

# record_run <folder> <SIMTEST> <command>...
record_run() {
  local manager=$PWD/scripts/lib/manager.py folder=$1 simtest=$2
  shift 2
  (
    cd -- "$folder"
    unset SIMTEST
    [[ $simtest == - ]] || export SIMTEST=$simtest
    if [[ " $* " == *" -w "* ]]; then
      python3 -B "$manager" conversation "$@" > stdout.raw 2> stderr || printf 'status %s\n' "$?" > status
    else
      "$@" > stdout.raw 2> stderr || printf 'status %s\n' "$?" > status
    fi
    # Standard output is a text on Windows, with line ends of its own; files are not.
    tr -d '\r' < stdout.raw |
      sed -E 's/^(GenerateConnectivityList\(\) Time=|CPU time \(s\): ).*/\1<time>/; s/^(REGISTER:  Port: ).*/\1<port>/' > stdout
    rm stdout.raw
  )
}

# require_good_runs <folder>: every run of a recording ended in good order and left results.
require_good_runs() {
  local number file
  for number in $(seq "${#runs[@]}"); do
    [[ ! -e $1/$number/status ]] ||
      fail "run $number failed, $(< "$1/$number/status"): ${runs[number - 1]}" "its standard error: $(< "$1/$number/stderr")"
    for file in values.csv values.bin; do
      [[ -s $1/$number/$file ]] || fail "run $number wrote no $file: ${runs[number - 1]}" "run it by hand"
    done
    [[ " ${runs[number - 1]} " != *" -w "* || -s $1/$number/conversation ]] ||
      fail "run $number told its manager nothing" "run it by hand"
  done
}

# compare_recordings <name> <folder> <other>: tells which runs differ, and in which files. Status 1 if any does.
compare_recordings() {
  local number differences different=0
  for number in $(seq "${#runs[@]}"); do
    if ! differences=$(diff -rq -x stderr "$2/$number" "$3/$number"); then
      ((different)) || say "DIFFERENT: $1"
      different=1
      say "  run $number: ${runs[number - 1]}"
      say "    in $(sed -E 's/^Only in [^:]*: //; s#^Files .*/([^/]*) differ$#\1#' <<< "$differences" | xargs)"
    fi
  done
  ((different)) || say "same bytes in $(find "$2" -type f | wc -l) files: $1"
  return "$different"
}
