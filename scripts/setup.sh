#!/usr/bin/env bash
# Installs what building and testing Fennick needs on Debian 12, when missing,
# and any further packages named as arguments (the fuzz build's clang).
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config zlib1g-dev libpng-dev libgtest-dev libgmock-dev libbenchmark-dev zip unzip
          qt6-base-dev qt6-qpa-plugins fonts-dejavu-core dbus dbus-daemon xvfb xauth
          "$@")
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -q
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
