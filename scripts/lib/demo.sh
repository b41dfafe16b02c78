#!/usr/bin/env bash
# demo.sh BUILD_FOLDER PICTURES: prints the report of a made-up home with an account in each state, on a bus and a
# keyring of its own, with a usage endpoint on 127.0.0.1. Then shows the program on desktops of its own and takes
# pictures. Leaves nothing else behind.
set -euo pipefail

# The service under which Claude Code keeps the credential of a config directory that is not the default one.
service_of() { printf 'Claude Code-credentials-%.8s' "$(printf %s "$1" | sha256sum)"; }

# credential TOKEN EXPIRES_AT_MS PLAN: the JSON that Claude Code keeps.
credential() {
    printf '{"claudeAiOauth":{"accessToken":"%s","refreshToken":"","expiresAt":%s,"subscriptionType":"%s"}}' "$@"
}

# identity FOLDER_OR_FILE NAME ORGANISATION_TYPE
identity() {
    printf '{"oauthAccount":{"emailAddress":"%s@demo.invalid","organizationName":"Demo","organizationType":"%s"}}' \
        "$2" "$3" >"$1"
}

make_accounts() {
    local now later
    now=$(date +%s%3N)
    later=$((now + 8 * 3600 * 1000))
    mkdir -p "$HOME"/.claude{,-work,-old,-left,-new}
    # The default directory, whose identity file lies beside it: readable from a file.
    credential demonstration-token-in-a-file "$later" max >"$HOME/.claude/.credentials.json"
    identity "$HOME/.claude.json" anna claude_max
    # Readable from the keyring.
    identity "$HOME/.claude-work/.claude.json" ben claude_team
    credential demonstration-token-in-the-keyring "$later" team |
        secret-tool store --label='Claude Code' service "$(service_of "$HOME/.claude-work")"
    # Expired, signed out, and never signed in.
    credential demonstration-token-expired $((now - 3600 * 1000)) pro >"$HOME/.claude-old/.credentials.json"
    identity "$HOME/.claude-old/.claude.json" carl claude_pro
    credential "" 0 pro >"$HOME/.claude-left/.credentials.json"
    identity "$HOME/.claude-left/.claude.json" dora claude_pro
    identity "$HOME/.claude-new/.claude.json" emil claude_pro
    chmod 600 "$HOME"/.claude*/.credentials.json
}

iso() { date -u -d "@$1" +%Y-%m-%dT%H:%M:%S.000Z; } # seconds since 1970

# What a program that has run before, and its sibling, would have left: a reading with a wait, learnt resets, the status cache
# of VS Code's extension, and a `claude` program.
make_traces() {
    local now dir shared own
    now=$(date +%s)
    dir=$HOME/.claude-work
    shared=$HOME/.local/share/Quorle/usage-cache
    own=$HOME/.local/share/Vellumor
    mkdir -p "$shared" "$own" "$HOME/.local/bin"
    printf '{"schemaVersion":2,"fetchedAt":"%s","backoffUntil":"%s","source":"ostrelline","windows":[
        {"kind":"session","group":"session","percent":91,"isActive":true}]}' \
        "$(iso $((now - 400)))" "$(iso $((now + 200)))" >"$shared/$(printf %s "$dir" | sha256sum | head -c 8).json"
    printf '{"schemaVersion":1,"anchors":{"%s":{"seven_day_opus":{"resetsAt":"%s","offCadence":true},
        "weekly_all":{"resetsAt":"%s","offCadence":false}}}}' \
        "$dir" "$(iso $((now - 900000)))" "$(iso $((now - 500000)))" >"$own/reset-anchors.json"
    printf '{"updatedAt":"%s","usageData":{"utilization5h":58.5,"utilization7d":40,"reset5hAt":%s}}' \
        "$(iso $((now - 900)))" $((now + 8000)) >"$HOME/.claude/vscode-claude-status-cache.json"
    printf '#!/bin/sh\nexit 0\n' >"$HOME/.local/bin/claude"
    chmod 755 "$HOME/.local/bin/claude"
}

inside() {
    local build=$1 port
    if ! printf '\n' | gnome-keyring-daemon --unlock --components=secrets >"$HOME/keyring.log" 2>&1; then
        echo "The keyring of the demonstration does not start:" >&2
        cat "$HOME/keyring.log" >&2
        return 1
    fi
    make_accounts
    make_traces
    "$build/tests/demo/vellumor-usage-server" >"$HOME/port" &
    server=$!
    trap 'kill "$server" 2>/dev/null || true' EXIT
    until [[ -s $HOME/port ]]; do
        if ! kill -0 "$server" 2>/dev/null; then
            echo "The usage server of the demonstration does not start." >&2
            return 1
        fi
        sleep 0.05
    done
    read -r port <"$HOME/port"
    VELLUMOR_API_BASE="http://127.0.0.1:$port" VELLUMOR_DIAG=1 "$build/src/app/vellumor"
}

if [[ ${1-} == --inside ]]; then
    inside "$2"
    exit
fi

build=$(cd "$1" && pwd)
world=$(mktemp -d)
trap 'sleep 0.3; rm -rf "$world"' EXIT # the keyring ends a moment after its bus
mkdir -p "$world/home" "$world/run"
chmod 700 "$world/run"
# Nothing of the user's own session reaches the made-up one.
clean=(env -i PATH="$PATH" LANG=C.UTF-8)
"${clean[@]}" HOME="$world/home" XDG_RUNTIME_DIR="$world/run" \
    dbus-run-session -- bash "$0" --inside "$build" 2> >(grep -v "Failed to set fd limit" >&2)

printf '\nTaking pictures of the program on a desktop of its own, for less than a minute …\n'
pictures=$2
rm -rf "$pictures"
"${clean[@]}" HOME="$world/home" /usr/bin/python3 -B "$(dirname "$0")/desktop" "$build" "$pictures"
printf '%s pictures of the panel, the popover and the histories are in %s; all of them together in %s.\n' \
    "$(find "$pictures" -name '*-*x*.png' | wc -l)" "$pictures" "$pictures/all.png"
