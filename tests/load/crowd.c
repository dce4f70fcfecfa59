/* crowd PROCESSES LISTENERS answer|silent [ARGUMENT...] - that many processes with that many
 * listeners each, on free ports of 127.0.0.1. They answer every request with an empty 200, or
 * accept and say nothing. Prints every port and the process that listens there, then an empty line,
 * and serves until it is killed. More arguments only make the command line longer. */
#define _GNU_SOURCE
#include <arpa/inet.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

static int newListener(void)
{
    struct sockaddr_in address = {.sin_family = AF_INET, .sin_addr.s_addr = htonl(INADDR_LOOPBACK)};
    socklen_t size = sizeof address;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    if (bind(listener, (struct sockaddr *)&address, size) != 0 || listen(listener, 16) != 0 ||
        getsockname(listener, (struct sockaddr *)&address, &size) != 0)
        exit(3);
    printf("%d %d\n", ntohs(address.sin_port), (int)getpid());
    return listener;
}

static void watch(int poller, int descriptor, uint64_t isListener)
{
    struct epoll_event event = {.events = EPOLLIN,
                                .data.u64 = (uint64_t)descriptor << 1 | isListener};
    epoll_ctl(poller, EPOLL_CTL_ADD, descriptor, &event);
}

static void answer(int connection)
{
    static const char text[] = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    char request[4096];
    if (read(connection, request, sizeof request) > 0)
        send(connection, text, sizeof text - 1, MSG_NOSIGNAL);
    close(connection);
}

/* A silent member watches nothing: the kernel takes the connections, and nobody ever reads. */
static void serve(int poller)
{
    for (;;) {
        struct epoll_event events[64];
        const int count = epoll_wait(poller, events, 64, -1);
        for (int i = 0; i < count; ++i) {
            const int descriptor = (int)(events[i].data.u64 >> 1);
            if (events[i].data.u64 & 1) {
                const int connection = accept(descriptor, NULL, NULL);
                if (connection >= 0)
                    watch(poller, connection, 0);
            } else {
                answer(descriptor);
            }
        }
    }
}

/* The end of the last copy of `ready` tells the parent that everyone listens. */
static void member(int listeners, int isSilent, int ready)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int poller = epoll_create1(0);
    for (int i = 0; i < listeners; ++i) {
        const int listener = newListener();
        if (!isSilent)
            watch(poller, listener, 1);
    }
    close(ready);
    serve(poller);
}

int main(int argc, char *argv[])
{
    int ready[2];
    if (argc < 4 || pipe(ready) != 0)
        return 2;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setvbuf(stdout, NULL, _IOLBF, 0); /* a line at a time, so that none is torn */
    struct rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    for (int i = 0; i < atoi(argv[1]); ++i) {
        const int pid = fork();
        if (pid < 0)
            return 4;
        if (pid == 0)
            member(atoi(argv[2]), strcmp(argv[3], "silent") == 0, ready[1]);
    }
    close(ready[1]);
    char byte;
    if (read(ready[0], &byte, 1) != 0)
        return 5;
    printf("\n");
    for (;;)
        pause();
}
