#!/usr/bin/env bash
# Kernel objects show others nothing but their table. Anything else the linker could mix up: it keeps one of two
# templates of a name, and one copy of an inline function for everybody, perhaps the one compiled for AVX.
#
#   kernel_symbols.sh NM NAMESPACE OBJECT...
set -euo pipefail
nm=$1 namespace=$2
shift 2

table="_ZN${#namespace}${namespace}[0-9]+ru_[A-Za-z0-9]+RowsE"
objects=0 tables=0
for object in "$@"; do
    while read -r symbol type _; do
        case $type in
            [a-z]) [[ $type != [uvw] || $symbol == _GLOBAL_OFFSET_TABLE_ ]] && continue ;; # seen by this object alone
            U) [[ $symbol != _Z* || $symbol =~ ^$table$ ]] && continue ;; # of C, or another table
            [DR]) [[ $symbol =~ ^$table$ ]] && tables=$((tables + 1)) && continue ;;
        esac
        echo "$object: $type $symbol" >&2
        exit 1
    done < <("$nm" --format=posix "$object")
    objects=$((objects + 1))
done
echo "$objects objects with $tables tables"
[ $objects -gt 0 ] && [ $objects -eq $tables ]
