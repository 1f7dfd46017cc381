// Whether the program uses the library, and whether interposition works in it.
#ifndef TAV_FRONT_IN_FRONT_H
#define TAV_FRONT_IN_FRONT_H

namespace front {

// Whether libtav is in this process. In a process that merely inherited a preloaded implementation,
// such as a shell, every call is passed on.
bool usesLibrary();

// The name of the first function that is not interposed, because the program was linked with SDL
// first or loaded the library late. Null when there is none.
const char* firstOvertaken();

}  // namespace front

#endif
