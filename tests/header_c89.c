/* The headers in the hands of a strict C89 compiler. */
#include "tav.h"
#include "tavsim.h"
