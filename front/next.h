// The functions behind those that stand in front, and those of SDL that these need.
//
// What stands in front is not linked with SDL: a program that has none, or another version, shall
// not get SDL 1.2 because it inherited the preloading.
#ifndef TAV_FRONT_NEXT_H
#define TAV_FRONT_NEXT_H

namespace front {

void* findNext(const char* name);

template <typename Function>
Function* nextFunction(const char* name) {
    return reinterpret_cast<Function*>(findNext(name));
}

// The same for one that is declared: TAV_FRONT_NEXT(SDL_Delay).
#define TAV_FRONT_NEXT(function) front::nextFunction<decltype(function)>(#function)

// Whether the SDL of this process is version 1.2. Others have functions of the same names, and a
// program that uses them is none of ours.
bool isSdl12();

}  // namespace front

#endif
