#!/bin/sh
# Fails if a library uses anything that can throw: allocations other than nothrow ones, or functions
# of the C++ library.
# usage: check_throws.sh LIBRARY

! nm -D --undefined-only "$1" | grep -E ' U (_Zn[aw][jm](@|$)|_ZNK?St|_ZSt.*throw_|__cxa_.*throw)'
