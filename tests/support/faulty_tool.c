// A tool for tests: does what its first argument says.
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static void fill(FILE *stream, char byte, long count)
{
    char block[4096];
    memset(block, byte, sizeof block);
    for (; count > 0; count -= (long)sizeof block)
        fwrite(block, 1, count < (long)sizeof block ? (size_t)count : sizeof block, stream);
    fflush(stream);
}

int main(int argc, char **argv)
{
    const char *what = argc > 1 ? argv[1] : "";
    if (strcmp(what, "arguments") == 0) { // each argument on a line
        for (int i = 2; i < argc; ++i)
            puts(argv[i]);
    } else if (strcmp(what, "flood") == 0) { // 5 MB and 1 MB, standard error in the middle
        fill(stdout, 'a', 2500000);
        fill(stderr, 'e', 1000000);
        fill(stdout, 'b', 2500000);
    } else if (strcmp(what, "overflow") == 0) { // 64 MB, whether somebody reads them or not
        signal(SIGPIPE, SIG_IGN);
        for (int i = 0; i < 64; ++i)
            fill(stdout, 'a', 1000000);
    } else if (strcmp(what, "complain") == 0) { // 200 MB on standard error
        fill(stderr, 'e', 200000000);
    } else if (strcmp(what, "exit") == 0) {
        return atoi(argv[2]);
    } else if (strcmp(what, "crash") == 0) {
        fill(stdout, 'a', 3);
        raise(SIGSEGV);
    } else if (strcmp(what, "close") == 0) { // prints, closes both pipes and lives on a little
        fill(stdout, 'a', atol(argv[2]));
        fclose(stdout);
        fclose(stderr);
        usleep(200000);
        return 7;
    } else if (strcmp(what, "late") == 0) { // prints, and a little later one byte more
        fill(stdout, 'a', atol(argv[2]));
        usleep(200000);
        fill(stdout, 'b', 1);
    } else if (strcmp(what, "stdin") == 0) { // how many bytes wait on standard input
        printf("%ld", (long)fread((char[16]){0}, 1, 16, stdin));
    } else if (strcmp(what, "hang") == 0) { // prints its process id, ignores polite signals
        signal(SIGTERM, SIG_IGN);
        if (argc > 2) {
            FILE *file = fopen(argv[2], "w");
            fprintf(file, "%d", (int)getpid());
            fclose(file);
        }
        for (;;)
            pause();
    } else {
        return 64;
    }
    return 0;
}
