#!/usr/bin/env bash
# Every instruction set gives the same bytes: prints the digests that differ from the baseline's.
#
#   isa_digests.sh TESTS
set -euo pipefail
all=$(mktemp -d)
trap 'rm -r "$all"' EXIT
sets=(baseline avx2 avx512)

for set in "${sets[@]}"; do
    KREILUGE_ISA=$set "$1" --digest >"$all/$set"
done
echo "$(wc -l <"$all/baseline") digests"
[ -s "$all/baseline" ]
status=0
for set in "${sets[@]:1}"; do
    diff --unchanged-line-format= --old-line-format= --new-line-format="$set differs: %L" "$all/baseline" "$all/$set" || status=1
done
exit $status
