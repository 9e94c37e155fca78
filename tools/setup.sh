# Sourced by ./run and ./test: messages, and installing what is missing on a Debian-like system.
# shellcheck shell=bash

left_out=()

say() { printf '\n== %s ==\n' "$*"; }
die() {
  printf '%s\n' "$*" >&2
  exit 1
}
leave_out() {
  left_out+=("$*")
  printf 'left out: %s\n' "$*"
}
have() { command -v "$1" >/dev/null 2>&1; }

# missing_packages PACKAGE...: those that dpkg does not know as installed.
missing_packages() {
  have dpkg-query || return 0
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      printf '%s\n' "$package"
  done
}

# as_root COMMAND...: directly, or through sudo. Asks for a password only where somebody can answer.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif have sudo && { [ -t 0 ] || sudo -n true 2>/dev/null; }; then
    sudo "$@"
  else
    return 1
  fi
}

apt() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y \
    -o Acquire::Retries=1 -o Acquire::http::Timeout=20 -o Dpkg::Use-Pty=0 \
    -o DPkg::Lock::Timeout=120 "$@"
}

# install_packages PACKAGE...: tries once; what cannot be had is not tried again for an hour, so that
# the next start takes seconds. Whether a tool is there is asked where it is used.
install_packages() {
  local missing failed=build/.install-failed log=build/install.log package
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -gt 0 ] || return 0
  [ -z "${OAK_NO_INSTALL:-}" ] || return 0
  have apt-get || return 0
  mkdir -p build
  if [ -n "$(find "$failed" -mmin -60 2>/dev/null)" ] &&
    [ "$(cat "$failed")" = "${missing[*]}" ]; then
    return 0
  fi

  printf 'installing: %s\n' "${missing[*]}"
  if ! as_root true; then
    printf 'neither root nor sudo: nothing can be installed\n' | tee "$log"
  elif { apt update && apt install --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    rm -f "$failed"
    touch build/.installed
    return 0
  else
    # One that cannot be had must not keep the others away.
    for package in "${missing[@]}"; do
      apt install --no-install-recommends "$package" >>"$log" 2>&1 || true
    done
    touch build/.installed
  fi
  mapfile -t missing < <(missing_packages "${missing[@]}")
  [ ${#missing[@]} -gt 0 ] || return 0
  printf 'could not be installed: %s (%s tells why; the next try is in an hour)\n' "${missing[*]}" "$log"
  printf '%s' "${missing[*]}" >"$failed"
}

packages_to_build=(g++ cmake ninja-build ccache)
packages_to_test=(libgtest-dev libgmock-dev libbenchmark-dev clang-format-14)
packages_for_windows=(g++-mingw-w64-x86-64-posix googletest wine wine64)
packages_for_long=(clang clang-tidy)

# require_build_tools: without these nothing can be done.
require_build_tools() {
  have g++ || have clang++ || have c++ || die "There is no C++ compiler, and g++ could not be installed."
  have cmake || die "CMake is missing and could not be installed."
  have ninja || die "Ninja (package ninja-build) is missing and could not be installed."
}

# configure_and_build PRESET [TARGET]: configures at first, with new presets, and when packages were
# installed that were missing then; the build tool looks at the rest.
configure_and_build() {
  local preset=$1 target=${2:-all} log=build/$1/configure.log made=build/$1/build.ninja
  mkdir -p "build/$preset"
  if ! [ -e "$made" ] || [ CMakePresets.json -nt "$made" ] || [ build/.installed -nt "$made" ]; then
    if ! cmake --preset "$preset" >"$log" 2>&1; then
      cat "$log"
      return 1
    fi
  fi
  cmake --build --preset "$preset" --target "$target"
}
