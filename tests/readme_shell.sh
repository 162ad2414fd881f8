#!/bin/sh
# Runs the shell lines of a document in an empty directory.
#
#   readme_shell.sh DOCUMENT BIN DIRECTORY [FILE]...
#
# BIN is where the command is, DIRECTORY is made anew, with copies of the files.
set -eu

# shellcheck disable=SC2016
lines=$(sed -n '/^```sh$/,/^```$/{//!p}' "$1")
test -n "$lines"
bin=$2 directory=$3
shift 3
rm -rf "$directory"
mkdir "$directory"
for file in "$@"; do
    cp "$file" "$directory"
done
cd "$directory"
echo "$lines" | PATH="$bin:$PATH" sh -eux
