#!/usr/bin/env bash
# check.sh ROOT CLANG-FORMAT: fails when a source below ROOT is not laid out as .clang-format says.
# To put it right: tests/format/check.sh --fix
set -euo pipefail

fix=()
if [[ "${1:-}" == --fix ]]; then
    fix=(-i)
    set -- "$(dirname "${BASH_SOURCE[0]}")/../.." clang-format-14
fi

cd "$1"
folders=()
for folder in src demo tests benchmarks fuzzing; do
    [[ -d $folder ]] && folders+=("$folder")
done
mapfile -d '' sources < <(find "${folders[@]}" -type f \( -name '*.h' -o -name '*.cpp' \) -print0 | sort -z)
((${#sources[@]}))
if ((${#fix[@]})); then
    exec "$2" "${fix[@]}" "${sources[@]}"
fi
"$2" --dry-run -Werror "${sources[@]}"
echo "${#sources[@]} files are in order"
