/* Ends as it is told to: ends status N, ends signal N, or ends print TEXTS…, one a line. Not at all
   when it is asked to: ends stubborn. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <unistd.h>

int main(int argc, char *argv[])
{
    int i;

    if (argc < 2) {
        return 99;
    }
    if (strcmp(argv[1], "status") == 0) {
        return atoi(argv[2]);
    }
    if (strcmp(argv[1], "signal") == 0) {
        const struct rlimit no_core = {0, 0};
        setrlimit(RLIMIT_CORE, &no_core);
        signal(atoi(argv[2]), SIG_DFL);
        raise(atoi(argv[2]));
    }
    if (strcmp(argv[1], "stubborn") == 0) {
        signal(SIGTERM, SIG_IGN);
        printf("ready\n");
        fflush(stdout);
        for (;;) {
            pause();
        }
    }
    for (i = 2; i < argc; ++i) {
        printf("%s\n", argv[i]);
    }
    return 0;
}
