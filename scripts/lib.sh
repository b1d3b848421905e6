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

# Everything that building, testing and the demo need, as Debian packages.
readonly build_packages=(cmake ninja-build g++-mingw-w64-x86-64 g++-mingw-w64-i686 mingw-w64-tools libwine-dev python3)
readonly wine_packages=(wine wine64)
readonly test_packages=(libgtest-dev openssl)
readonly lint_packages=(clang-format clang-tidy cppcheck shellcheck)
readonly demo_packages=(nginx-light)

# as_root COMMAND...: as root or through sudo.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# need_packages NAME...: installs those that are missing. During the installation systemd is told to start no service.
need_packages() {
  local missing=() package
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null)" = "ii " ] || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
    die "missing packages (${missing[*]}), and neither root nor sudo to install them"
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

# build_target x64|x86 TARGET: builds one target of a configured width.
build_target() {
  cmake --build --preset "$1" --target "$2" >"$build/build-$1.log" 2>&1 || {
    cat "$build/build-$1.log" >&2
    die "building $1 failed"
  }
}

# build_width x64|x86 [CMAKE ARGUMENT...]: configures when needed, and builds everything.
build_width() {
  configure_width "$@"
  build_target "$1" all
}

# use_wine: the environment of every Windows program, and the project's own prefix, made once.
use_wine() {
  export PATH=/usr/lib/wine:$PATH
  export WINEPREFIX=$build/wine WINEARCH=win64 WINEDEBUG=${WINEDEBUG--all} WINEDLLOVERRIDES='mscoree,mshtml='
  unset DISPLAY WAYLAND_DISPLAY
  if [ ! -f "$WINEPREFIX/.ready" ]; then
    say "Making the Wine prefix build/wine"
    end_wine
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    wineboot --init >"$build/wineboot.log" 2>&1 </dev/null || die "wineboot failed; see build/wineboot.log"
    wineserver -w
    contain_user_folders
    touch "$WINEPREFIX/.ready"
  fi
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

# start_wine: one server for all programs of this script, in place of one that an interrupted script left.
start_wine() {
  use_wine
  end_wine
  wineserver -p >/dev/null 2>&1 </dev/null
}

# keep_wine: a server that ends with this script.
keep_wine() {
  trap end_wine EXIT
  start_wine
}

end_wine() {
  if [ -d "$build/wine" ]; then
    WINEPREFIX=$build/wine wineserver -k 2>/dev/null || true
  fi
}
