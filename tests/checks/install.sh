#!/usr/bin/env bash
# install.sh BUILD_FOLDER: installs into a folder of its own and runs what was installed.
set -euo pipefail
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cmake --install "$1" --prefix "$place/usr" >/dev/null
mkdir "$place/home"
report=$(env -i HOME="$place/home" VELLUMOR_DIAG=1 "$place/usr/bin/vellumor")
grep -q '^Vellumor 1\.0\.0 — diagnostics$' <<<"$report"
for file in doc/vellumor/README.md applications/dev.quorle.vellumor.desktop \
    icons/hicolor/{scalable/apps/dev.quorle.vellumor.svg,symbolic/apps/dev.quorle.vellumor-symbolic.svg} \
    icons/hicolor/{16x16,256x256}/apps/dev.quorle.vellumor.png; do
    test -f "$place/usr/share/$file"
done
desktop-file-validate "$place/usr/share/applications/dev.quorle.vellumor.desktop"
