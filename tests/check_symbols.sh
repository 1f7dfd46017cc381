#!/bin/sh
# Shows how the dynamic symbols that a library defines differ from a list, and fails if they do.
# usage: check_symbols.sh LIBRARY LIST

nm -D --defined-only "$1" | awk '{ print $NF }' | LC_ALL=C sort | diff -u "$2" -
