#!/bin/sh
# Shows how the dynamic symbols that a library defines differ from a list, and fails if they do. What
# is in the simulator's namespace counts as one, so that its test interface can grow.
# usage: check_symbols.sh LIBRARY LIST

nm -D --defined-only "$1" | awk '{ print $NF }' | sed -E 's/^_ZNK?6tavsim.*/_ZN6tavsim*/' |
    LC_ALL=C sort -u | diff -u "$2" -
