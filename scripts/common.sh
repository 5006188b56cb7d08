# SPDX-License-Identifier: MIT

# shellcheck shell=bash
# Sourced by the other scripts: changes to the root of the sources and defines what they share.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

kJobs=${KAP_JOBS:-$(nproc)}

say() { printf '\n== %s\n' "$*"; }

fail() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    fail "run as root: $*"
  fi
}

is_installed() {
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# kap_install GROUP...: installs the missing packages of these groups.
kap_install() {
  local group package missing=()
  if ! command -v dpkg-query >/dev/null; then
    echo "Not Debian: make sure that the packages of scripts/packages.txt for '$*' exist." >&2
    return
  fi
  while read -r group package; do
    if [[ " $* " == *" $group "* ]] && ! is_installed "$package"; then
      missing+=("$package")
    fi
  done < <(grep -v -e '^#' -e '^$' scripts/packages.txt)
  [ ${#missing[@]} -gt 0 ] || return 0

  say "Installing ${missing[*]}"
  as_root apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# kap_build PRESET [CMAKE-ARGUMENT...]: configures and builds it. TARGETS, if set, names what to
# build.
kap_build() {
  local preset=$1
  shift
  say "Building $preset"
  cmake --preset "$preset" --log-level=NOTICE "$@"
  # Word splitting is intended: TARGETS may name several.
  # shellcheck disable=SC2086
  cmake --build --preset "$preset" -j "$kJobs" ${TARGETS:+--target $TARGETS}
}
