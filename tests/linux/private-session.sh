#!/usr/bin/env bash
# Runs a command on a D-Bus session bus of its own, with empty XDG folders, so
# that the desktop services it starts (Evolution Data Server, mock services)
# see only what the command creates, and leave nothing behind.
set -euo pipefail
home=$(mktemp -d "${TMPDIR:-/tmp}/tavrin-session.XXXXXX")
trap 'rm -rf "$home"' EXIT
mkdir -p "$home"/{config,data,cache,state,runtime}
chmod 700 "$home/runtime"
export HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data
export XDG_CACHE_HOME=$home/cache XDG_STATE_HOME=$home/state XDG_RUNTIME_DIR=$home/runtime
export GSETTINGS_BACKEND=memory GIO_USE_VFS=local
dbus-run-session -- "$@"
