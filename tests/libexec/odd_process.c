/* A process as odd as its script, the environment variable ODD, says. Words are separated by "|":
 *   listen ADDRESS  listen on a free port of it, or on the last one again; the port is printed
 *   port N          what is listened on next, if not a free one
 *   reuseport       let the sockets after this share their port
 *   fork N          N children, which inherit everything and wait
 *   again N         N more descriptors of the last listener
 *   launch ADDRESS  a child that listens; the port is printed
 *   servers N       N children, each with a listener of its own
 *   comm NAME       the name that prctl(PR_SET_NAME) gives
 *   argv TEXT       overwrites the arguments' memory with TEXT and NULs
 *   shut            not dumpable: its descriptors are for root alone
 *   fds N           N more descriptors
 *   idle N          N children with no socket
 *   exit-main       the main thread ends, another goes on
 *   remove          removes its own executable
 *   busy            uses up processor time
 *   churn           for ever: a child that listens, prints its port and pid, and ends after 1 to
 *                   64 ms
 *   usage COMMAND   runs the command, prints its largest memory in KiB
 * Then it prints an empty line and waits to be killed. */
#define _GNU_SOURCE
#include <arpa/inet.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

static int port;
static int share;
static int listener = -1;

static int listenOn(const char *address)
{
    struct sockaddr_in ipv4 = {.sin_family = AF_INET, .sin_port = htons((uint16_t)port)};
    struct sockaddr_in6 ipv6 = {.sin6_family = AF_INET6, .sin6_port = htons((uint16_t)port)};
    const int family = strchr(address, ':') ? AF_INET6 : AF_INET;
    struct sockaddr *generic =
        family == AF_INET6 ? (struct sockaddr *)&ipv6 : (struct sockaddr *)&ipv4;
    socklen_t size = family == AF_INET6 ? sizeof ipv6 : sizeof ipv4;
    const int one = 1;
    const int descriptor = socket(family, SOCK_STREAM, 0);
    if (inet_pton(family, address,
                  family == AF_INET6 ? (void *)&ipv6.sin6_addr : (void *)&ipv4.sin_addr) != 1)
        exit(2);
    if (share)
        setsockopt(descriptor, SOL_SOCKET, SO_REUSEPORT, &one, sizeof one);
    if (family == AF_INET6)
        setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &one, sizeof one);
    if (bind(descriptor, generic, size) != 0 || listen(descriptor, 5) != 0)
        exit(3);
    getsockname(descriptor, generic, &size);
    port = ntohs(family == AF_INET6 ? ipv6.sin6_port : ipv4.sin_port);
    return descriptor;
}

static int child(void)
{
    const int parent = getpid();
    const int pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(0);
    }
    return pid;
}

static void *waitForEver(void *nothing)
{
    for (;;)
        pause();
    return nothing;
}

/* Prints the empty line once the main thread has ended. */
static void *outliveMainThread(void *nothing)
{
    char path[64], text[512] = "";
    snprintf(path, sizeof path, "/proc/self/task/%d/stat", (int)getpid());
    while (strstr(text, ") Z ") == NULL) {
        const int file = open(path, O_RDONLY);
        const ssize_t size = read(file, text, sizeof text - 1);
        close(file);
        text[size > 0 ? size : 0] = 0;
        usleep(1000);
    }
    printf("\n");
    fflush(stdout);
    return waitForEver(nothing);
}

static void churn(void)
{
    for (;;) {
        const int pid = child();
        if (pid == 0) {
            port = 0;
            listenOn("127.0.0.1");
            char text[64];
            const int size = snprintf(text, sizeof text, "%d %d\n", port, (int)getpid());
            if (write(1, text, (size_t)size) != size)
                _exit(1);
            usleep(1000U << (getpid() % 7));
            _exit(0);
        }
        waitpid(pid, NULL, 0);
    }
}

static void launch(const char *address)
{
    int ends[2];
    if (pipe(ends) != 0)
        exit(6);
    if (child() == 0) {
        listenOn(address);
        if (write(ends[1], &port, sizeof port) != sizeof port)
            _exit(1);
        waitForEver(NULL);
    }
    close(ends[1]);
    if (read(ends[0], &port, sizeof port) != sizeof port)
        exit(6);
    close(ends[0]);
}

static void usage(const char *command)
{
    struct rusage used;
    const int pid = child();
    if (pid == 0) {
        if (!freopen("/dev/null", "w", stdout))
            _exit(1);
        char *words[32] = {NULL};
        size_t count = 0;
        for (char *word = strtok(strdup(command), " "); word && count < 31;
             word = strtok(NULL, " "))
            words[count++] = word;
        execv(words[0], words);
        _exit(127);
    }
    wait4(pid, NULL, 0, &used);
    printf("%ld\n", used.ru_maxrss);
}

int main(int argc, char *argv[])
{
    char *const start = argv[0];
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const size_t space = (size_t)(argv[argc - 1] + strlen(argv[argc - 1]) + 1 - start);
    char *rest = strdup(getenv("ODD") ? getenv("ODD") : "");
    for (char *step; (step = strsep(&rest, "|")) != NULL;) {
        const char *verb = strsep(&step, " ");
        const char *value = step ? step : "";
        if (!strcmp(verb, "listen")) {
            listener = listenOn(value);
            printf("%d\n", port);
        } else if (!strcmp(verb, "again")) {
            for (int i = 0; i < atoi(value); ++i) {
                if (dup(listener) < 0)
                    exit(7);
            }
        } else if (!strcmp(verb, "launch")) {
            launch(value);
            printf("%d\n", port);
        } else if (!strcmp(verb, "port")) {
            port = atoi(value);
        } else if (!strcmp(verb, "reuseport")) {
            share = 1;
        } else if (!strcmp(verb, "fork")) {
            for (int i = 0; i < atoi(value); ++i) {
                if (child() == 0)
                    waitForEver(NULL);
            }
        } else if (!strcmp(verb, "servers")) {
            for (int i = 0; i < atoi(value); ++i) {
                if (child() == 0) {
                    port = 0;
                    listenOn("127.0.0.1");
                    waitForEver(NULL);
                }
            }
        } else if (!strcmp(verb, "idle")) {
            for (int i = 0; i < atoi(value); ++i) {
                const int pid = child();
                if (pid < 0)
                    exit(5);
                if (pid == 0) {
                    close_range(3, ~0U, 0);
                    waitForEver(NULL);
                }
            }
        } else if (!strcmp(verb, "comm")) {
            prctl(PR_SET_NAME, value);
        } else if (!strcmp(verb, "argv")) {
            memset(start, 0, space);
            memcpy(start, value, strlen(value) < space ? strlen(value) : space);
        } else if (!strcmp(verb, "shut")) {
            prctl(PR_SET_DUMPABLE, 0);
        } else if (!strcmp(verb, "fds")) {
            struct rlimit limit;
            getrlimit(RLIMIT_NOFILE, &limit);
            limit.rlim_cur = limit.rlim_max;
            setrlimit(RLIMIT_NOFILE, &limit);
            int made = 0;
            while (made < atoi(value) && dup(0) >= 0)
                ++made;
            printf("%d\n", made);
        } else if (!strcmp(verb, "remove")) {
            char path[4096] = "";
            if (readlink("/proc/self/exe", path, sizeof path - 1) < 0 || unlink(path) != 0)
                exit(4);
        } else if (!strcmp(verb, "exit-main")) {
            pthread_t thread;
            fflush(stdout);
            pthread_create(&thread, NULL, outliveMainThread, NULL);
            pthread_exit(NULL);
        } else if (!strcmp(verb, "usage")) {
            usage(value);
        } else if (!strcmp(verb, "churn")) {
            churn();
        } else if (!strcmp(verb, "busy")) {
            printf("\n");
            fflush(stdout);
            for (volatile unsigned long turns = 0;;)
                turns = turns + 1;
        }
        fflush(stdout);
    }
    printf("\n");
    fflush(stdout);
    waitForEver(NULL);
}
