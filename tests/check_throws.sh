#!/bin/sh
# Shows what a library uses that can throw, and fails if there is anything: allocations that do not
# answer null, and functions of the C++ library.
# usage: check_throws.sh LIBRARY

! nm -D --undefined-only "$1" | grep -E ' U (_Zn[aw][jm](@|$)|_ZNK?St|_ZSt.*throw_|__cxa_.*throw)'
