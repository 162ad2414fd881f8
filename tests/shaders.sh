#!/usr/bin/env bash
# Every piece of GLSL compiles and links with those that it needs, for each number of components. Skipped, with the
# exit code 77, where there is no compiler for it.
#
#   shaders.sh TESTS
set -euo pipefail
if ! command -v glslangValidator >/dev/null; then
    echo "SKIPPED: no glslangValidator; script/setup --dev installs it"
    exit 77
fi
all=$(mktemp -d)
trap 'rm -r "$all"' EXIT

"$1" --shaders "$all"
for program in "$all"/*.comp; do
    glslangValidator -l "$program" >"$all/log" || {
        cat "$all/log"
        cp "$program" .
        echo "the program is now in $PWD"
        exit 1
    }
done
