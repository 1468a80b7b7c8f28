#!/usr/bin/env bash
# Checks a shared library against the ABI baseline of its last release, or
# writes the baseline of a release.
#
#   scripts/check-abi.sh BASELINE.abi LIBRARY
#   scripts/check-abi.sh --write-baseline LIBRARY HEADERS_DIR > BASELINE.abi
#
# The baseline is abidw's description of the library's exported interface and
# the types of HEADERS_DIR it reaches. With the same SONAME as the baseline, the
# library must keep every interface of it unchanged: it may add functions and
# types, but abidiff must report no removal (its exit bit 8) and, additions set
# aside, no change to what the baseline has (bit 4): abidiff flags a type whose
# size or layout changed with bit 4 alone, and such a change breaks binaries
# just as well. A new SONAME is a release that breaks on purpose, and is not
# compared.
set -euo pipefail

if [[ "${1:-}" == --write-baseline && $# == 3 ]]; then
  # Without paths or source locations of this machine, so that the file reads
  # the same wherever it is made.
  exec abidw --exported-interfaces-only --headers-dir "$3" --drop-private-types \
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed "$2"
fi
if (($# != 2)); then
  echo "usage: $0 BASELINE.abi LIBRARY | --write-baseline LIBRARY HEADERS_DIR" >&2
  exit 2
fi
baseline=$1 library=$2

baseline_soname=$(sed -n "s/.*<abi-corpus [^>]*soname='\([^']*\)'.*/\1/p" "$baseline" | head -n 1)
library_soname=$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
if [[ -z "$baseline_soname" || -z "$library_soname" ]]; then
  echo "check-abi: no SONAME in $baseline or $library" >&2
  exit 1
fi
if [[ "$baseline_soname" != "$library_soname" ]]; then
  echo "check-abi: $library is $library_soname, the baseline $baseline_soname: a new major" \
    "release, not compared"
  exit 0
fi

status=0
report=$(abidiff --no-added-syms "$baseline" "$library") || status=$?
if ((status & 1 || status & 2)); then
  echo "check-abi: abidiff failed (status $status)" >&2
  echo "$report" >&2
  exit 1
fi
if ((status & 8 || status & 4)); then
  echo "check-abi: $library breaks the ABI of $baseline_soname; change the SONAME or undo:" >&2
  echo "$report" >&2
  exit 1
fi
echo "check-abi: $library keeps the ABI of $baseline_soname"
