#!/usr/bin/env bash
# install.sh BUILD_FOLDER: installs into a folder of its own and runs what was installed.
set -euo pipefail
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cmake --install "$1" --prefix "$place/usr" >/dev/null
mkdir "$place/home"
report=$(env -i HOME="$place/home" VELLUMOR_DIAG=1 "$place/usr/bin/vellumor")
grep -q '^Vellumor 1\.0\.0 — diagnostics$' <<<"$report"
test -f "$place/usr/share/doc/vellumor/README.md"
