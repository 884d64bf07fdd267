#!/usr/bin/env bash
# Fails, naming file and line, when clang-format would change a tracked source.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t sources < <(git ls-files '*.h' '*.cpp')
[ "${#sources[@]}" -gt 0 ] || { echo "format check: no tracked source found" >&2; exit 1; }
clang-format --dry-run --Werror "${sources[@]}"
echo "format check: ${#sources[@]} files as clang-format lays them out"
