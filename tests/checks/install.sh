#!/usr/bin/env bash
# install.sh BUILD_FOLDER VERSION: installs into a folder of its own and runs what was installed.
set -euo pipefail
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cmake --install "$1" --prefix "$place/usr" >/dev/null
mkdir "$place/home"
report=$(env -i HOME="$place/home" VELLUMOR_DIAG=1 "$place/usr/bin/vellumor")
grep -qxF "Vellumor $2 — diagnostics" <<<"$report"
test "$(env -i "$place/usr/bin/vellumor" --version)" = "Vellumor $2"
test -x "$place/usr/libexec/vellumor/vellumor"
for file in man/man1/vellumor.1 bash-completion/completions/vellumor zsh/vendor-completions/_vellumor \
    fish/vendor_completions.d/vellumor.fish doc/vellumor/README.md applications/dev.quorle.vellumor.desktop \
    icons/hicolor/{scalable/apps/dev.quorle.vellumor.svg,symbolic/apps/dev.quorle.vellumor-symbolic.svg} \
    icons/hicolor/{16x16,256x256}/apps/dev.quorle.vellumor.png; do
    test -f "$place/usr/share/$file"
done
# Software centres want the description itself under a free licence; whether it gets one is the owner's to say.
problems=$(appstreamcli validate --no-net "$place/usr/share/metainfo/dev.quorle.vellumor.metainfo.xml" | grep '^[EWI]:' || true)
test -z "$(grep -v ' metadata-license-invalid ' <<<"$problems" || true)"
desktop-file-validate "$place/usr/share/applications/dev.quorle.vellumor.desktop"
warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$place/usr/share/man/man1/vellumor.1" 2>&1 >/dev/null)
test -z "$warnings"
bash -n "$place/usr/share/bash-completion/completions/vellumor"
zsh -n "$place/usr/share/zsh/vendor-completions/_vellumor"
