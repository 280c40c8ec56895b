#!/usr/bin/env bash
# Installs the Debian/Ubuntu packages needed to build, test and run the plug-in.
# The report's table library and jQuery are built into the host program; the
# browser and its driver run the report's test in a real browser.
# Idempotent: when everything is already installed it returns without touching apt.
set -euo pipefail

packages=(
  build-essential cmake pkg-config git
  qt6-base-dev qt6-base-dev-tools qt6-qpa-plugins libqt6sql6-sqlite libgl-dev
  liblnk-dev libolecf-dev libbfio-dev libplist-dev
  sqlite3 libsqlite3-dev
  libjs-jquery libjs-jquery-datatables
  chromium chromium-driver
)
# Optional extras used by the cross-check tests, fuzzers and sanitizer builds.
if [ "${VLC_ARTIFACTS_EXTRA:-0}" = "1" ]; then
  packages+=(liblnk-utils libolecf-utils clang libclang-rt-14-dev)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
