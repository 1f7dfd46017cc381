// The table of functions of SDL, SQLite and libc that every implementation interposes.
#pragma once

// clang-format off

// Functions that take a path: name, result, parameters, and the arguments for the original function
// once `path` is redirected.
#define TAV_FRONT_PATH_FUNCTIONS(ROW)                                                              \
    ROW(fopen,          FILE*, (const char* path, const char* mode), (path, mode))                 \
    ROW(fopen64,        FILE*, (const char* path, const char* mode), (path, mode))                 \
    ROW(open,           int, (const char* path, int flags, mode_t mode), (path, flags, mode))      \
    ROW(open64,         int, (const char* path, int flags, mode_t mode), (path, flags, mode))      \
    ROW(openat,         int, (int folder, const char* path, int flags, mode_t mode),               \
                             (folder, path, flags, mode))                                          \
    ROW(openat64,       int, (int folder, const char* path, int flags, mode_t mode),               \
                             (folder, path, flags, mode))                                          \
    ROW(__open_2,       int, (const char* path, int flags), (path, flags))                         \
    ROW(__open64_2,     int, (const char* path, int flags), (path, flags))                         \
    ROW(__openat_2,     int, (int folder, const char* path, int flags), (folder, path, flags))     \
    ROW(__openat64_2,   int, (int folder, const char* path, int flags), (folder, path, flags))     \
    ROW(access,         int, (const char* path, int mode), (path, mode))                           \
    ROW(stat,           int, (const char* path, void* status), (path, status))                     \
    ROW(stat64,         int, (const char* path, void* status), (path, status))                     \
    ROW(lstat,          int, (const char* path, void* status), (path, status))                     \
    ROW(lstat64,        int, (const char* path, void* status), (path, status))                     \
    ROW(fstatat,        int, (int folder, const char* path, void* status, int flags),              \
                             (folder, path, status, flags))                                        \
    ROW(fstatat64,      int, (int folder, const char* path, void* status, int flags),              \
                             (folder, path, status, flags))                                        \
    ROW(__xstat,        int, (int version, const char* path, void* status),                        \
                             (version, path, status))                                              \
    ROW(__xstat64,      int, (int version, const char* path, void* status),                        \
                             (version, path, status))                                              \
    ROW(__lxstat,       int, (int version, const char* path, void* status),                        \
                             (version, path, status))                                              \
    ROW(__lxstat64,     int, (int version, const char* path, void* status),                        \
                             (version, path, status))                                              \
    ROW(statx,          int, (int folder, const char* path, int flags, unsigned mask,              \
                              void* status), (folder, path, flags, mask, status))                  \
    ROW(opendir,        DIR*, (const char* path), (path))                                          \
    ROW(unlink,         int, (const char* path), (path))                                           \
    ROW(remove,         int, (const char* path), (path))                                           \
    ROW(sqlite3_open,   int, (const char* path, sqlite3** database), (path, database))             \
    ROW(sqlite3_open_v2, int, (const char* path, sqlite3** database, int flags,                    \
                               const char* system), (path, database, flags, system))               \
    TAV_FRONT_TIME64_FUNCTIONS(ROW)

// Where time_t has 32 bits by default, programs that ask for 64 bits call functions of other names.
#if __SIZEOF_LONG__ == 4
#define TAV_FRONT_TIME64_FUNCTIONS(ROW)                                                            \
    ROW(__stat64_time64,    int, (const char* path, void* status), (path, status))                 \
    ROW(__lstat64_time64,   int, (const char* path, void* status), (path, status))                 \
    ROW(__fstatat64_time64, int, (int folder, const char* path, void* status, int flags),          \
                                 (folder, path, status, flags))
#define TAV_FRONT_TIME64_LIBRARY_FUNCTIONS(NAME) NAME(__stat64_time64)
#else
#define TAV_FRONT_TIME64_FUNCTIONS(ROW)
#define TAV_FRONT_TIME64_LIBRARY_FUNCTIONS(NAME)
#endif

// Functions that need more than another path. Each is defined where it belongs.
#define TAV_FRONT_OTHER_FUNCTIONS(NAME)                                                            \
    NAME(mkdir) NAME(system) NAME(getuid)                                                          \
    NAME(SDL_PumpEvents) NAME(SDL_PollEvent) NAME(SDL_WaitEvent) NAME(SDL_Delay)                   \
    NAME(SDL_GetMouseState) NAME(SDL_GetRelativeMouseState) NAME(SDL_GL_SwapBuffers)

// The functions of this table that the library itself calls. It is linked with --wrap, so that its
// calls use symbols that no other library defines.
#define TAV_FRONT_LIBRARY_FUNCTIONS(NAME)                                                          \
    NAME(fopen) NAME(fopen64) NAME(stat) NAME(stat64) NAME(mkdir) NAME(system) NAME(getuid)        \
    NAME(sqlite3_open) TAV_FRONT_TIME64_LIBRARY_FUNCTIONS(NAME)

// clang-format on
