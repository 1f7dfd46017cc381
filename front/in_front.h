// Whether the program calls the functions that stand in front, or those behind them.
#ifndef TAV_FRONT_IN_FRONT_H
#define TAV_FRONT_IN_FRONT_H

namespace front {

// The name of the first function that the program finds without passing the one in front of it, as
// when it loaded the library late or was linked with SDL first. Null when there is none.
const char* firstOvertaken();

}  // namespace front

#endif
