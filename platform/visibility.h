/* How the platform's libraries export what these headers declare. */
#ifndef TAV_PLATFORM_VISIBILITY_H
#define TAV_PLATFORM_VISIBILITY_H

#define TAV_PLATFORM_API __attribute__((visibility("default")))

#endif
