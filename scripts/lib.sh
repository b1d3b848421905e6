# What the scripts share; sourced, with `set -euo pipefail` in force.
# shellcheck shell=bash disable=SC2034,SC2164  # the lists are used where this is sourced, and so is `set -e`

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build
cd "$root"

say() { printf '%s\n' "$*" >&2; }

die() {
  say "error: $*"
  exit 1
}

# Everything that building, testing, the demo and measuring need, as Debian packages.
readonly build_packages=(cmake ninja-build g++-mingw-w64-x86-64 g++-mingw-w64-i686 mingw-w64-tools libwine-dev python3
  libcli11-dev nlohmann-json3-dev libfmt-dev)
readonly wine_packages=(wine wine64)
readonly test_packages=(clang libgtest-dev lld openssl rapidjson-dev)
readonly lint_packages=(clang-format clang-tidy cppcheck shellcheck libxml2-utils)
readonly page_packages=(nodejs node-acorn)
readonly server_packages=(nginx-light)
readonly bench_packages=(curl)
readonly wine32_packages=(debootstrap bubblewrap)
readonly fuzz_packages=(clang libclang-rt-dev llvm)
readonly package_packages=(wixl msitools osslsigncode)
readonly browser_packages=(chromium chromium-driver firefox-esr xvfb xdg-utils xdotool imagemagick python3-selenium bubblewrap)

# as_root COMMAND...: as root or through sudo.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# ask_for_root: the question for a password, if there is one, comes now. What runs in the background cannot ask.
ask_for_root() {
  [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null || die "$1, and neither root nor sudo to do it"
  as_root true
}

missing_packages() {
  local package installed
  installed=$(dpkg-query -W -f '${db:Status-Abbrev}${Package}\n' "$@" 2>/dev/null || true)
  for package in "$@"; do
    grep -qx "ii $package" <<<"$installed" || printf '%s\n' "$package"
  done
}

# need_packages NAME...: installs those that are missing. During the installation systemd is told to start no service.
need_packages() {
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -eq 0 ] && return
  ask_for_root "packages are missing (${missing[*]})"
  say "Installing ${missing[*]}"
  mkdir -p "$build"
  {
    as_root apt-get update &&
      as_root env DEBIAN_FRONTEND=noninteractive SYSTEMD_OFFLINE=1 \
        apt-get install -y --no-install-recommends "${missing[@]}"
  } >"$build/packages.log" 2>&1 </dev/null || {
    tail -n 20 "$build/packages.log" >&2
    die "the packages could not be installed; the whole output is in build/packages.log"
  }
}

# only_one_run: what builds, or has a server of Wine for itself, is at work once in this folder. Nothing that outlives it keeps the
# lock, which is file 9.
only_one_run() {
  mkdir -p "$build"
  exec 9>"$build/run.lock"
  flock --nonblock 9 || die "another of this folder's scripts is at work; let it end first"
}

# configure_width x64|x86 [CMAKE ARGUMENT...]: configures when needed.
configure_width() {
  local width=$1
  shift
  [ -f "build/$width/build.ninja" ] || rm -f "build/$width/CMakeCache.txt" # an interrupted first run
  cmake --preset "$width" "$@" >"$build/configure-$width.log" 2>&1 || {
    cat "$build/configure-$width.log" >&2
    die "configuring $width failed"
  }
}

# build_target x64|x86 TARGET...: builds targets of a configured width.
build_target() {
  cmake --build --preset "$1" --target "${@:2}" >"$build/build-$1.log" 2>&1 || {
    cat "$build/build-$1.log" >&2
    die "building $1 failed"
  }
}

# build_width x64|x86 [CMAKE ARGUMENT...]: configures when needed, and builds everything.
build_width() {
  configure_width "$@"
  build_target "$1" all
}

# A 32-bit Wine is the machine's own or, where there is none, that of a small i386 Debian below build/, which bubblewrap enters
# with the project's folder at its usual place.
readonly i386=$build/i386

has_wine32() { [ -x /usr/lib/wine/wine ] || [ -f "$i386/.ready" ]; }

need_wine32() {
  has_wine32 && return
  need_packages "${wine32_packages[@]}"
  say "Making a 32-bit Wine in build/i386"
  make_i386 >"$build/i386.log" 2>&1 </dev/null || {
    tail -n 5 "$build/i386.log" >&2
    die "a 32-bit Wine cannot be had here (build/i386.log says why); scripts/test --width x64 does without it"
  }
}

# What is mounted while it is made is mounted where nobody else sees it, and is gone with the processes that need it. A run that
# was killed may still be at work: the lock waits for it.
# shellcheck disable=SC2016  # apt-get and sh take the words in single quotes as they stand
make_i386() {
  local mirror codename
  mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | grep -v security | head -n 1)
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  as_root flock "$build/i386.lock" unshare --mount sh -ec '
    folder=$1 project=$2 codename=$3 mirror=$4
    [ ! -f "$folder/.ready" ] || exit 0
    rm -rf --one-file-system "$folder"
    debootstrap --arch=i386 --variant=minbase "$codename" "$folder" "$mirror"
    cp /etc/resolv.conf /etc/hosts "$folder/etc"
    mountpoint -q "$folder/proc" || mount -t proc proc "$folder/proc"
    chroot "$folder" apt-get update
    DEBIAN_FRONTEND=noninteractive chroot "$folder" apt-get install -y --no-install-recommends wine wine32
    mkdir -p "$folder$project"
    touch "$folder/.ready"' make_i386 "$i386" "$root" "$codename" "$mirror"
}

# with_wine COMMAND...: a command of the Wine that choose_prefix chose. Wine's services live on for a while, and keep no lock.
with_wine() {
  if [ "$WINEARCH" = win64 ] || [ -x /usr/lib/wine/wine ]; then
    "$@" 9>&-
  else
    bwrap --bind "$i386" / --proc /proc --dev /dev --bind /tmp /tmp --bind "$root" "$root" --chdir "$PWD" "$@" 9>&-
  fi
}

# run_windows PROGRAM...: in the prefix that was chosen.
run_windows() {
  if [ "$WINEARCH" = win64 ]; then with_wine "${fixed_addresses[@]}" wine64 "$@"; else with_wine wine "$@"; fi
}

export PATH=/usr/lib/wine:$PATH # wine64, wineboot and wineserver

# A 64-bit process of Wine needs one page at a fixed address. Linux puts the process's heap somewhere in the gigabyte around it,
# so one process in some ten thousand found it taken and ended before it came up (CreateProcess: 1359). With addresses that are
# not random there is none; a machine that does not allow this has to live with it.
fixed_addresses=()
if setarch -R true 2>/dev/null; then fixed_addresses=(setarch -R); fi

# choose_prefix [x64|x86 [NUMBER]]: the environment of every Windows program of that width. A prefix serves one program at a
# time; the first one is for all, scripts/test has more of them.
choose_prefix() {
  export WINEPREFIX=$build/wine WINEARCH=win64 WINEDEBUG=${WINEDEBUG--all} WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
  if [ "${1:-x64}" = x86 ]; then
    export WINEPREFIX=$build/wine-x86 WINEARCH=win32
  fi
  [ "${2:-1}" -eq 1 ] || WINEPREFIX+=-$2
  unset DISPLAY WAYLAND_DISPLAY
}

# use_wine [x64|x86 [NUMBER]]: chooses a prefix, which is made once.
use_wine() {
  choose_prefix "$@"
  [ -f "$WINEPREFIX/.complete" ] || make_prefix
}

make_prefix() {
  local name=${WINEPREFIX#"$build/"}
  say "Making the Wine prefix build/$name"
  end_wine
  rm -rf "$WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  run_windows wineboot --init >"$build/$name.log" 2>&1 </dev/null || die "wineboot failed; see build/$name.log"
  hide_no_files
  with_wine wineserver -w
  contain_user_folders
  touch "$WINEPREFIX/.complete"
}

# hide_no_files: Wine gives every file whose name begins with a dot the attribute "hidden". Windows does not.
hide_no_files() {
  run_windows reg add 'HKCU\Software\Wine' /v ShowDotFiles /d Y /f >/dev/null 2>&1 </dev/null || die "Wine's registry cannot be written"
}

# contain_user_folders: a new prefix shows the user's own home as Documents, Desktop and so on. They become folders of the
# prefix, so that nothing that runs in it writes to the home.
contain_user_folders() {
  local folder
  for folder in "$WINEPREFIX"/drive_c/users/*/*; do
    if [ -L "$folder" ]; then
      rm "$folder"
      mkdir "$folder"
    fi
  done
}

# stay_on_processor NUMBER: this script, and all that it starts from now on, stays on one of its processors (counted round). A
# program of Wine and its server wait for each other all the time; left to wander over the processors, the same work takes
# twice the time and more.
stay_on_processor() {
  local processor
  processor=$(python3 -c 'import os, sys; mine = sorted(os.sched_getaffinity(0)); print(mine[int(sys.argv[1]) % len(mine)])' "$1")
  taskset --cpu-list --pid "$processor" "$BASHPID" >/dev/null
}

make_certificates() {
  flock "$build/tls.lock" tests/support/make-certificates build/tls ||
    die "the test certificates could not be made; see build/tls/log"
}

# trust_authority: the authority of the test certificates is trusted inside the prefix, and there only. The prefix's file tells
# whether it is; importing it again would change nothing.
trust_authority() {
  local name
  name=$(grep -oE '[0-9A-F]{40}' "$build/tls/ca.reg")
  grep -qiF "$name" "$WINEPREFIX/user.reg" && return
  run_windows reg import build/tls/ca.reg >"$build/trust.log" 2>&1 </dev/null ||
    die "the test authority could not be trusted; see build/trust.log"
}

# start_wine [WIDTH [NUMBER]]: one server for all programs of this script, in place of one that an interrupted script left. It
# ends half a minute after the last program, should the script come to no end of its own.
start_wine() {
  use_wine "$@"
  end_wine
  with_wine wineserver -p30 >/dev/null 2>&1 </dev/null
}

# end_wine: ends what runs in the prefix that was chosen last, or in the 64-bit one.
end_wine() {
  local prefix=${WINEPREFIX:-$build/wine}
  if [ -d "$prefix" ]; then
    WINEPREFIX=$prefix WINEARCH=${WINEARCH:-win64} with_wine wineserver -k 2>/dev/null || true
  fi
}

# count_torture WIDTH: from the output of the torture tests, how many calls were made to fail.
count_torture() {
  tr -d '\r' | awk -v width="$1" '
    / calls failed/ { for (i = 1; i < NF; i++) if ($(i + 1) == "calls") calls += $i; scenarios++ }
    / uses$/ { uses += $(NF - 1) }
    / interrupted [0-9]+ / { stops += $(NF - 1) }
    END { printf "%s: %d calls failed in %d uses of %d scenarios, %d interruptions\n", width, calls, uses, scenarios, stops }'
}
