#!/usr/bin/env bash
# Fresh machine to first result: installs what is needed, builds, writes the
# sample evidence trees and runs the plug-in on each of them.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
"$here/scripts/install-deps.sh"
"$here/scripts/build.sh" "$here/build"
"$here/build/vlc-artifacts" demo --out "${1:-$here/vlc_artifacts_demo}"
