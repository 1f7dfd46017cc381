#!/bin/sh
# Compares the dynamic symbols that a library defines with a list, and fails if they differ. All
# symbols in the simulator's namespace count as one, so that its test interface can grow. On 32 bits,
# size_t is mangled otherwise, and C's functions with a 64-bit time have names of their own.
# usage: check_symbols.sh LIBRARY LIST

nm -D --defined-only "$1" | awk '{ print $NF }' |
    sed -E -e 's/^_ZNK?6tavsim.*/_ZN6tavsim*/' -e 's/(HDataReader.*Kv)j$/\1m/' -e '/_time64$/d' |
    LC_ALL=C sort -u | diff -u "$2" -
