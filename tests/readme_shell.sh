#!/bin/sh
# Runs the shell lines of a document in an empty directory.
#
#   readme_shell.sh DOCUMENT BIN DIRECTORY
#
# BIN is where the command is, DIRECTORY is made anew.
set -eu

# shellcheck disable=SC2016
lines=$(sed -n '/^```sh$/,/^```$/{//!p}' "$1")
test -n "$lines"
rm -rf "$3"
mkdir "$3"
cd "$3"
echo "$lines" | PATH="$2:$PATH" sh -eux
