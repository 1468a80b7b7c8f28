#!/usr/bin/env bash
# Fails, listing the files, when a C++ source of the repository is not laid out
# as .clang-format says (`make format` fixes them).
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files '*.cpp' '*.hpp' '*.h' '*.c')
unformatted=()
for file in "${files[@]}"; do
  clang-format --dry-run --Werror "$file" >/dev/null 2>&1 || unformatted+=("$file")
done
if ((${#unformatted[@]})); then
  printf 'not formatted (run make format):\n' >&2
  printf '  %s\n' "${unformatted[@]}" >&2
  exit 1
fi
echo "format: ${#files[@]} files as .clang-format says"
