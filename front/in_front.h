// Whether the program uses the library, and calls the functions that stand in front or those behind
// them.
#ifndef TAV_FRONT_IN_FRONT_H
#define TAV_FRONT_IN_FRONT_H

namespace front {

// Whether libtav is in this process. In one that merely inherited a preloaded implementation, such
// as a shell, everything is passed on.
bool usesLibrary();

// The name of the first function that the program finds without passing the one in front of it, as
// when it loaded the library late or was linked with SDL first. Null when there is none.
const char* firstOvertaken();

}  // namespace front

#endif
