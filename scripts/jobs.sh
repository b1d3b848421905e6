# Jobs that run side by side, and what they are at while one waits for them. On a terminal the last line always shows it, and is
# written anew every second; otherwise there is a line for everything that begins or ends, and one every half minute.
# Sourced, behind lib.sh; who sources it calls end_jobs before it ends.
# shellcheck shell=bash

declare -A job_process=() job_output=() job_began=() job_part=() job_state=() job_result=()
running_jobs=()    # in the order of their beginnings
terminal=no
[ ! -t 2 ] || terminal=yes
readonly quiet_seconds=30
last_told=$SECONDS

# log_of NAME: where a job's output goes, as a path from the root on.
log_of() { printf 'build/%s.log' "${1// /-}"; }

# tell TEXT: a line that stays.
tell() {
  [ "$terminal" = no ] || printf '\r\033[K' >&2
  say "$*"
  last_told=$SECONDS
}

# start NAME COMMAND...: begins a job, in a process group of its own.
start() {
  local name=$1 log output
  shift
  log=$(log_of "$name")
  : >"$log"
  exec {output}<"$log"
  job_output[$name]=$output
  set -m
  ("$@") >"$log" 2>&1 </dev/null &
  set +m
  job_process[$name]=$!
  job_began[$name]=$SECONDS
  job_part[$name]=
  job_state[$name]=
  running_jobs+=("$name")
  tell "$name: begun"
}

# wait_for NAME...: waits until these jobs have ended; fails when one of them failed. Meanwhile it tells of all jobs.
wait_for() {
  local name status=0
  while look_at_jobs && are_running "$@"; do
    show_jobs
    sleep 0.5
  done
  for name in "$@"; do
    [ "${job_result[$name]}" -eq 0 ] || status=1
  done
  return "$status"
}

are_running() {
  local name
  for name in "$@"; do
    [ -n "${job_result[$name]:-}" ] || return 0
  done
  return 1
}

look_at_jobs() {
  local name still=()
  for name in "${running_jobs[@]}"; do
    if kill -0 "${job_process[$name]}" 2>/dev/null; then
      read_output "$name"
      still+=("$name")
    else
      conclude_job "$name"
    fi
  done
  running_jobs=("${still[@]}")
}

conclude_job() {
  local name=$1 output=${job_output[$1]} result=0
  wait "${job_process[$name]}" || result=$?
  read_output "$name"
  exec {output}<&-
  job_result[$name]=$result
  if [ "$result" -eq 0 ]; then
    tell "$name: done, $((SECONDS - job_began[$name])) s"
  else
    grep -v '^\[[0-9]*/[0-9]*\] ' "$(log_of "$name")" >&2 || true
    tell "$name: FAILED, $((SECONDS - job_began[$name])) s; its output is above and in $(log_of "$name")"
  fi
}

# read_output NAME: what the job wrote since the last time. The beginning of a line is kept until the rest of it is there.
read_output() {
  local name=$1 line
  while IFS= read -r line <&"${job_output[$name]}"; do
    take_line "$name" "${job_part[$name]}$line"
    job_part[$name]=
  done
  job_part[$name]+=$line
  if [[ ${job_part[$name]} =~ ^([a-z0-9-]+)\ +$ ]]; then
    job_state[$name]=${BASH_REMATCH[1]} # a check of scripts/lint that is being made
  fi
}

# take_line NAME LINE: the lines of ninja, CTest and scripts/lint that tell how far they are.
take_line() {
  local name=$1 line=$2
  if [[ $line =~ ^\[([0-9]+/[0-9]+)\]\  ]]; then
    job_state[$name]=${BASH_REMATCH[1]}
  elif [[ $line =~ ^\ +Start\ +[0-9]+:\ ([^ ]+)$ ]]; then
    job_state[$name]+=" ${BASH_REMATCH[1]}"
  elif [[ $line =~ ^\ *([0-9]+/[0-9]+)\ Test\ +\#[0-9]+:\ ([^ ]+)\ [.\ ]*([^.].*[^ ])\ +([0-9.]+\ sec)$ ]]; then
    job_state[$name]=${job_state[$name]/" ${BASH_REMATCH[2]}"/}
    tell "$name: ${BASH_REMATCH[1]} ${BASH_REMATCH[2]} ${BASH_REMATCH[3]}, ${BASH_REMATCH[4]%ec}"
  elif [[ $line =~ ^([a-z0-9-]+)\ +(ok|FAILED)\ +([0-9.]+\ s)$ ]]; then
    job_state[$name]=
    tell "$name: ${BASH_REMATCH[1]} ${BASH_REMATCH[2]}, ${BASH_REMATCH[3]}"
  fi
}

show_jobs() {
  local name text=
  for name in "${running_jobs[@]}"; do
    text+="${text:+, }$name${job_state[$name]:+: }${job_state[$name]# } ($((SECONDS - job_began[$name])) s)"
  done
  if [ "$terminal" = yes ]; then
    printf '\r\033[K%s' "${text:0:$(($(columns) - 1))}" >&2
  elif [ $((SECONDS - last_told)) -ge "$quiet_seconds" ]; then
    tell "$text"
  fi
}

columns() {
  local size
  size=$(stty size 2>/dev/null <&2) || size="24 80"
  printf '%d' "${size#* }"
}

# end_jobs: ends all jobs that still run, with what they started.
end_jobs() {
  local name
  for name in "${running_jobs[@]}"; do
    kill -TERM -- "-${job_process[$name]}" 2>/dev/null || true
  done
  for name in "${running_jobs[@]}"; do
    wait "${job_process[$name]}" 2>/dev/null || true
  done
  running_jobs=()
  [ "$terminal" = no ] || printf '\r\033[K' >&2
}
