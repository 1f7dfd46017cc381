#!/bin/sh
# Compares the dynamic symbols that a library defines with a list, and fails if they differ. All
# symbols in the simulator's namespace count as one, so that its test interface can grow.
# usage: check_symbols.sh LIBRARY LIST

nm -D --defined-only "$1" | awk '{ print $NF }' | sed -E 's/^_ZNK?6tavsim.*/_ZN6tavsim*/' |
    LC_ALL=C sort -u | diff -u "$2" -
