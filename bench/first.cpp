// The smallest program that calls the library.
#include "tav.h"

int main(int, char**) {
    return TAV_Init(0);
}
