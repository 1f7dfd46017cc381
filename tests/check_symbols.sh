#!/bin/sh
# Compares the dynamic symbols that a library defines with a list, and fails if they differ. All
# symbols in the simulator's namespace count as one, so that its test interface can grow.
# usage: check_symbols.sh LIBRARY LIST

on_32_bits=
if readelf -h "$1" | grep -q ELF32; then
    # size_t is mangled otherwise, and C's functions with a 64-bit time have names of their own.
    on_32_bits='s/(HDataReader.*Kv)j$/\1m/; /_time64$/d'
fi
nm -D --defined-only "$1" | awk '{ print $NF }' |
    sed -E -e 's/^_ZNK?6tavsim.*/_ZN6tavsim*/' -e "$on_32_bits" | LC_ALL=C sort -u | diff -u "$2" -
