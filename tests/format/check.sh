#!/usr/bin/env bash
# check.sh ROOT CLANG-FORMAT: fails when a source below ROOT is not laid out as .clang-format says.
# To put it right: tests/format/check.sh --fix
set -euo pipefail

how=(--dry-run -Werror)
if [[ "${1:-}" == --fix ]]; then
    how=(-i)
    set -- "$(dirname "${BASH_SOURCE[0]}")/../.." clang-format-14
fi

cd "$1"
for folder in src demo tests benchmarks fuzzing; do
    mapfile -d '' sources < <(find "$folder" -type f \( -name '*.h' -o -name '*.cpp' \) -print0)
    ((${#sources[@]})) || { echo "There are no sources in $folder." >&2; exit 1; }
    "$2" "${how[@]}" "${sources[@]}"
    echo "$folder: ${#sources[@]} files are in order"
done
