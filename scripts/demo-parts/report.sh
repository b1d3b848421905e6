# What the demo shows, and what it makes sure of. Sourced by scripts/demo.

differences=0

title() { printf '\n%s\n%s\n' "$*" "${*//?/=}"; }
heading() { printf '\n%s\n' "$*"; }

# check TEXT COMMAND...: a line that says whether it is so.
check() {
  local text=$1
  shift
  if "$@"; then
    printf '  ok      %s\n' "$text"
  else
    printf '  NOT SO  %s\n' "$text"
    differences=$((differences + 1))
  fi
}

# get_facts PATH...: what Windows knows of these files, for the functions below: facts, a line for each.
get_facts() {
  mapfile -t facts < <(windows cscript //nologo 'scripts\demo-parts\files.js' "$@")
  [ ${#facts[@]} -eq $# ] || die "the files could not be looked at"
}

# fact_of NAME: the line of one file.
fact_of() { printf '%s\n' "${facts[@]}" | grep -F "|$1|"; }

# path_of NAME: where one file is, as this side names it.
path_of() {
  local folder
  folder=$(fact_of "$1" | cut -d'|' -f1)
  folder=${folder#?:}
  printf '%s\n' "$WINEPREFIX/drive_c${folder//\\//}/$1"
}

show_commands() {
  heading "The commands of $address/stockroom/$1.xml (sources below the same folder without it)"
  python3 scripts/demo-parts/commands.py "$demo/web/stockroom/$1.xml" "$address/stockroom/"
}

show_files() {
  local fact folder name bytes time attributes
  heading "The files, as Windows sees them (times are UTC)"
  for fact in "${facts[@]}"; do
    IFS='|' read -r folder name bytes time attributes <<<"$fact"
    if [ "$bytes" = - ]; then
      printf '  %-14s %-50s  %s\n' "$name" "is not there" "$folder"
    else
      printf '  %-14s %4s bytes  %-19s  %-17s  %s\n' "$name" "$bytes" "$time" "$attributes" "$folder"
    fi
  done
}

# show_requests: what the page made the control ask for.
show_requests() {
  heading "What the server was asked for"
  sed 's/^/  /' "$demo/nginx/requests.log"
}

# show_log FILE TITLE: a log file, indented.
show_log() {
  heading "$2"
  if [ -s "$1" ]; then
    tr -d '\r' <"$1" | expand -t 4 | sed 's/^/  | /'
  else
    printf '  (nothing was written)\n'
  fi
}

# show_result CODE: the code that the run ended with, and its name. A script sees no difference between S_OK and
# S_FALSE; the log does: its last entry says when a command failed.
show_result() {
  heading "The result"
  printf '  %s %s\n' "$(result_name "$1")" "$1"
}

result_name() {
  case $1 in
    0x00000000) echo "S_OK, every command succeeded:" ;;
    0x00000001) echo "S_FALSE, a command failed (the script cannot see it, the log's last entry says it):" ;;
    0x80004005) echo "E_FAIL" ;;
    0x80070002) echo "HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)" ;;
    0x80070005) echo "E_ACCESSDENIED" ;;
    0x80070057) echo "E_INVALIDARG" ;;
    0x8000ffff) echo "E_UNEXPECTED" ;;
    *) echo "result code" ;;
  esac
}

# has_bytes NAME FILE: the copied file is what the file here is.
has_bytes() { cmp -s "$(path_of "$1")" "$2"; }

# has_facts NAME TEXT: the end of the file's line: time and attributes, or attributes only.
has_facts() { [[ $(fact_of "$1") == *"|$2" ]]; }

# kept_hidden: what becomes of the hidden attribute. Wine keeps it in an extended attribute of the file, which not every
# file system has.
kept_hidden() {
  if python3 -c 'import os, sys; os.setxattr(sys.argv[1], "user.norvik", b"1")' "$demo/output.txt" 2>/dev/null; then
    echo "hidden"
  else
    echo "normal"
  fi
}

is_absent() { has_facts "$1" '-|-|-'; }
was_asked_for() { grep -qF "/$1 " "$demo/nginx/requests.log"; }
was_not_asked_for() { ! was_asked_for "$1"; }
log_has() { grep -qF -- "$1" "$log"; }
log_ends_with() { [ -s "$log" ] && [[ $(tail -n 1 "$log") == *"$1"* ]]; }
