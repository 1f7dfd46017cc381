// What every implementation puts in front of SDL, SQLite and libc, in one table.
#ifndef TAV_FRONT_FUNCTIONS_H
#define TAV_FRONT_FUNCTIONS_H

// clang-format off

// Functions that take a path: name, result, parameters, and the arguments that the function behind
// receives once `path` is the real one.
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

// Where a time is 32 bits unless a program asks for more, those that do have names of their own.
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

// Functions that do more than that, each defined where it belongs.
#define TAV_FRONT_OTHER_FUNCTIONS(NAME)                                                            \
    NAME(mkdir) NAME(system) NAME(getuid)                                                          \
    NAME(SDL_PumpEvents) NAME(SDL_PollEvent) NAME(SDL_WaitEvent)

// Those of them that the library itself calls. It is linked so that its calls have names of their own
// (--wrap), which no other library has.
#define TAV_FRONT_LIBRARY_FUNCTIONS(NAME)                                                          \
    NAME(fopen) NAME(fopen64) NAME(stat) NAME(stat64) NAME(mkdir) NAME(system) NAME(getuid)        \
    NAME(sqlite3_open) TAV_FRONT_TIME64_LIBRARY_FUNCTIONS(NAME)

// clang-format on

#endif
