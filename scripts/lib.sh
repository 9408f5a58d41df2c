# Shared by the scripts: where the project is, what must be installed, how a preset is built. Sourced, never run.
# Standard output belongs to the programs that are run; everything said here goes to standard error.
# shellcheck shell=bash disable=SC2034
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

build_packages=(g++ cmake ninja-build python3-dev libspdlog-dev libcli11-dev libboost-dev nlohmann-json3-dev)
test_packages=(libgtest-dev python3-pyparsing)
bench_packages=(pybind11-dev)

say() { printf '%s\n' "$@" >&2; }
die() { say "$@"; exit 1; }

is_installed() {
  case $1 in
    # Tools may come from elsewhere, e.g. a newer cmake than the distribution's.
    g++ | cmake | clang | clang-tidy | clang-format-16 | shellcheck) command -v "$1" >/dev/null ;;
    ninja-build) command -v ninja >/dev/null ;;
    *) [[ $(dpkg-query -W -f='${Status}' "$1" 2>/dev/null) == *' installed' ]] ;;
  esac
}

# require PACKAGE…: installs what is missing, or says how.
require() {
  local package missing=() as_root=()
  command -v dpkg-query >/dev/null || return 0  # another distribution: the build itself names what it lacks
  for package; do
    is_installed "$package" || missing+=("$package")
  done
  if ((${#missing[@]})); then
    if ((EUID != 0)); then
      as_root=(sudo)
      sudo -n true 2>/dev/null || die "Missing packages. Install them with:" \
        "  sudo apt-get update && sudo apt-get install -y --no-install-recommends ${missing[*]}"
    fi
    say "Installing ${missing[*]}"
    {
      "${as_root[@]}" apt-get update -qq &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends "${missing[@]}"
    } >&2 || die "Could not install: ${missing[*]}"
  fi
  require_cmake
}

require_cmake() {
  local version
  version=$(cmake --version | sed -n '1s/[^0-9]*//p')
  [[ $(printf '%s\n' 3.25 "$version" | sort -V | head -n 1) == 3.25 ]] ||
    die "CMake 3.25 or newer is required, found $version." \
      "Newer ones: https://apt.kitware.com for Ubuntu 22.04, or 'pip install cmake' anywhere."
}

# configure PRESET [OPTION…]
configure() {
  local preset=$1
  shift
  (cd "$root" && cmake --preset "$preset" "$@") >&2
}

# build PRESET [TARGET…]: everything, or only the targets.
build() {
  local preset=$1
  shift
  # Two builds in one folder would write the same files.
  flock "$root/build/$preset" cmake --build "$root/build/$preset" --parallel "$(nproc)" ${1:+--target "$@"} >&2
}

is_configured() { [[ -e $root/build/$1/build.ninja ]]; }
