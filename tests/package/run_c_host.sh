#!/usr/bin/env bash
# Runs the C example host against a sandbox started for it on loopback: a
# collection prints the server's answer, and a wrong key is reported with the
# error's kind and HTTP status and exit status 1.
#   run_c_host.sh TAVRIN_TOOL C_HOST PROFILE
set -euo pipefail
tool=$1 host=$2 profile=$3
scratch=$(mktemp -d "${TMPDIR:-/tmp}/tavrin-c-host.XXXXXX")
coproc sandbox { exec "$tool" sandbox --no-ui --cert-dir "$scratch/certs" 2>"$scratch/sandbox.log"; }
sandbox_pid=$sandbox_PID
trap 'kill -TERM "$sandbox_pid" 2>/dev/null || true; wait "$sandbox_pid" || true; rm -rf "$scratch"' EXIT
ready=
read -r -t 60 ready <&"${sandbox[0]}" || true
[[ $ready == "sandbox ready: "* ]] || { cat "$scratch/sandbox.log" >&2; exit 1; }
read -r -a service <<<"${ready#sandbox ready: }"  # --url U --resolve R --ca-file C

answer=$("$host" "${service[@]}" --key sandbox-key --record c-host-1 --profile "$profile")
[[ $answer == 'accepted record "c-host-1" as upload 1' ]] || { echo "answer: $answer" >&2; exit 1; }

status=0
"$host" "${service[@]}" --key wrong-key --record c-host-2 --profile "$profile" \
  2>"$scratch/refused.log" || status=$?
[[ $status == 1 ]] && grep -q 'the login failed: kind 0, HTTP status 401' "$scratch/refused.log" ||
  { echo "wrong key: status $status, $(cat "$scratch/refused.log")" >&2; exit 1; }
echo "c-host: $answer; refused: $(cat "$scratch/refused.log")"
