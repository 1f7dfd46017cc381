/* Ends as it is told to: ends status N, ends signal N, or ends print TEXTS…, one a line. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>

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
    for (i = 2; i < argc; ++i) {
        printf("%s\n", argv[i]);
    }
    return 0;
}
