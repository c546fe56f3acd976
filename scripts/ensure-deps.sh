#!/usr/bin/env bash
# Installs the Debian packages the build, tests and benchmarks need, only
# when something is missing (apt-get update first, as the lists may be stale).
set -euo pipefail
needed=(cmake ninja-build g++ pkg-config libgtest-dev googletest libfftw3-dev binutils python3-matplotlib)
missing=()
for pkg in "${needed[@]}"; do
  dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
fi
