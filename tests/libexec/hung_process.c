/* hung_process HOW USER DIRECTORY PROGRAM - a process of USER that waits for a file system which
 * has stopped to answer, mounted on DIRECTORY where only it can see it. HOW is one of: memory
 * listens, and one of its threads keeps the process's memory locked: whoever reads its
 *            /proc/PID/cmdline waits
 *   mount    runs PROGRAM, a file that only the mounted file system has; the script in the
 *            environment variable ODD goes to it
 *   cover    runs PROGRAM, and then the file system is mounted over the directory that it is in
 * Prints the process's id, its port, and an empty line once it hangs. Where the kernel refuses the
 * mount, prints why and exits. Everything ends with this process. */
#define _GNU_SOURCE
#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <linux/fuse.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

enum { fileNode = 2 };

static int device = -1;
static int program = -1; /* what the file holds; -1: nothing that could be read */
/* A byte comes from each where a reader waits for an answer. */
static int wasAsked[2];
static int doesHang[2];
static volatile sig_atomic_t isDead;
static pid_t server;

static void refuse(const char *what)
{
    printf("%s: %s\n", what, strerror(errno));
    exit(1);
}

static void killWithParent(pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(0);
}

static void answer(uint64_t request, int error, const void *body, size_t size)
{
    struct fuse_out_header header = {(uint32_t)(sizeof header + size), error, request};
    struct iovec parts[] = {{&header, sizeof header}, {(void *)body, size}};
    if (writev(device, parts, size > 0 ? 2 : 1) < 0 && errno != ENOENT)
        _exit(2);
}

static struct fuse_attr attributes(uint64_t node)
{
    struct fuse_attr result = {.ino = node, .nlink = 1, .size = 4096};
    struct stat status;
    result.mode = node == FUSE_ROOT_ID ? S_IFDIR | 0755 : S_IFREG | 0755;
    if (node == fileNode && program >= 0 && fstat(program, &status) == 0)
        result.size = (uint64_t)status.st_size;
    return result;
}

static void die(int signal)
{
    isDead = signal;
}

static void answerRead(const struct fuse_in_header *request)
{
    static char bytes[1U << 20U];
    const struct fuse_read_in *read = (const void *)(request + 1);
    if (program < 0) {
        die(SIGUSR1);
        if (write(wasAsked[1], "", 1) != 1 || write(doesHang[1], "", 1) != 1)
            _exit(2);
        return;
    }
    const ssize_t size = pread(program, bytes, read->size, (off_t)read->offset);
    answer(request->unique, 0, bytes, size > 0 ? (size_t)size : 0);
}

static void answerRequest(const struct fuse_in_header *request)
{
    const void *const body = request + 1;
    if (request->opcode == FUSE_INIT) {
        const struct fuse_init_in *asked = body;
        const struct fuse_init_out settings = {.major = FUSE_KERNEL_VERSION,
                                               .minor = FUSE_KERNEL_MINOR_VERSION,
                                               .max_readahead = asked->max_readahead,
                                               .max_write = 4096};
        answer(request->unique, 0, &settings, sizeof settings);
    } else if (request->opcode == FUSE_LOOKUP) {
        /* Not valid for any time: whoever looks the name up again has to ask again. */
        const struct fuse_entry_out entry = {.nodeid = fileNode, .attr = attributes(fileNode)};
        answer(request->unique, 0, &entry, sizeof entry);
    } else if (request->opcode == FUSE_GETATTR) {
        const struct fuse_attr_out out = {.attr = attributes(request->nodeid)};
        answer(request->unique, 0, &out, sizeof out);
    } else if (request->opcode == FUSE_OPEN) {
        const struct fuse_open_out out = {.open_flags = FOPEN_KEEP_CACHE};
        answer(request->unique, 0, &out, sizeof out);
    } else if (request->opcode == FUSE_READ) {
        answerRead(request);
    } else if (request->opcode != FUSE_FORGET && request->opcode != FUSE_INTERRUPT) {
        answer(request->unique, -ENOSYS, NULL, 0);
    }
}

static void serve(void)
{
    static char request[1U << 17U];
    signal(SIGUSR1, die);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    sigprocmask(SIG_UNBLOCK, &signals, NULL);
    for (;;) {
        const ssize_t size = read(device, request, sizeof request);
        if (size < 0 && errno != EINTR && errno != ENOENT)
            _exit(0);
        if (size > 0 && !isDead)
            answerRequest((const void *)request);
    }
}

static void *readPage(void *page)
{
    char byte;
    const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    return pread(memory, &byte, 1, (off_t)page) == 1 ? page : NULL;
}

/* Waits for the lock that the reader holds, so that every later reader waits for this one. */
static void *mapPage(void *nothing)
{
    char byte;
    if (read(wasAsked[0], &byte, 1) == 1)
        mmap(NULL, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return nothing;
}

static void listenAndPrint(void)
{
    struct sockaddr_in address = {.sin_family = AF_INET, .sin_addr = {htonl(INADDR_LOOPBACK)}};
    socklen_t size = sizeof address;
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    if (bind(listener, (struct sockaddr *)&address, size) != 0 || listen(listener, 5) != 0)
        refuse("listen");
    getsockname(listener, (struct sockaddr *)&address, &size);
    printf("%d\n", ntohs(address.sin_port));
    fflush(stdout);
}

static void lockMemory(const char *file)
{
    pthread_t threads[2];
    const int descriptor = open(file, O_RDONLY | O_CLOEXEC);
    void *const page = mmap(NULL, 4096, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (page == MAP_FAILED)
        refuse("mmap");
    listenAndPrint();
    pthread_create(&threads[1], NULL, mapPage, NULL);
    pthread_create(&threads[0], NULL, readPage, page);
    for (;;)
        pause();
}

static void become(uid_t user)
{
    if (geteuid() == 0 && user != 0 &&
        (setgroups(0, NULL) != 0 || setgid(user) != 0 || setuid(user) != 0))
        refuse("setuid");
    prctl(PR_SET_DUMPABLE, 1);
}

static void writeMap(const char *path, unsigned id)
{
    char text[32];
    const int size = snprintf(text, sizeof text, "%u %u 1", id, id);
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0 || write(file, text, (size_t)size) != size)
        refuse(path);
    close(file);
}

static void enterOwnNamespace(void)
{
    const uid_t own = geteuid();
    const gid_t group = getegid();
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            refuse("unshare");
        writeMap("/proc/self/uid_map", own);
        const int groups = open("/proc/self/setgroups", O_WRONLY | O_CLOEXEC);
        if (groups < 0 || write(groups, "deny", 4) != 4)
            refuse("setgroups");
        close(groups);
        writeMap("/proc/self/gid_map", group);
    }
    if (mount("none", "/", NULL, MS_REC | MS_PRIVATE, NULL) != 0)
        refuse("mount --make-rprivate");
    /* The kernel wants it and the mount in one user namespace. */
    device = open("/dev/fuse", O_RDWR | O_CLOEXEC);
    if (device < 0)
        refuse("/dev/fuse");
}

static void mountOn(const char *directory, uid_t user)
{
    char options[128];
    const uid_t own = geteuid();
    const gid_t group = getegid();
    snprintf(options, sizeof options, "fd=%d,rootmode=40000,user_id=%u,group_id=%u,allow_other",
             device, own == 0 ? user : own, own == 0 ? user : group);
    if (mount("hung", directory, "fuse", MS_NOSUID | MS_NODEV, options) != 0)
        refuse("mount");
}

static int isWaiting(pid_t pid)
{
    char command[64];
    snprintf(command, sizeof command, "grep -qs ') D ' /proc/%d/task/*/stat", (int)pid);
    return system(command) == 0;
}

/* Serves the file system in a child. */
static void startServer(void)
{
    const pid_t parent = getpid();
    server = fork();
    if (server == 0) {
        killWithParent(parent);
        serve();
    }
}

/* The process prints its port; nothing is printed before its id. Returns when it runs its program,
 * if it is to run one. */
static pid_t start(int isMemory, uid_t user, const char *file)
{
    int go[2];
    int isRunning[2];
    char byte = 0;
    if (pipe(go) != 0 || pipe2(isRunning, O_CLOEXEC) != 0)
        refuse("pipe");
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        close(device);
        become(user);
        killWithParent(parent);
        if (read(go[0], &byte, 1) != 1)
            _exit(1);
        if (isMemory)
            lockMemory(file);
        execl(file, file, (char *)NULL);
        refuse("exec");
    }
    printf("%d\n", (int)pid);
    fflush(stdout);
    close(isRunning[1]);
    if (write(go[1], &byte, 1) != 1 || (!isMemory && read(isRunning[0], &byte, 1) != 0))
        refuse("pipe");
    return pid;
}

int main(int argc, char *argv[])
{
    if (argc != 5 || pipe2(wasAsked, O_CLOEXEC) != 0 || pipe2(doesHang, O_CLOEXEC) != 0)
        return 1;
    /* It may come at any time. */
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    sigprocmask(SIG_BLOCK, &signals, NULL);
    const int isMemory = strcmp(argv[1], "memory") == 0;
    const int isCover = strcmp(argv[1], "cover") == 0;
    const uid_t user = (uid_t)atoi(argv[2]);
    const char *const directory = argv[3];
    char file[4096];
    snprintf(file, sizeof file, "%s/%s", directory, isMemory ? "page" : "renamed");
    if (!isMemory)
        program = open(argv[4], O_RDONLY | O_CLOEXEC);
    enterOwnNamespace();
    if (!isCover) {
        mountOn(directory, user);
        startServer();
    }
    const pid_t pid = start(isMemory, user, isCover ? argv[4] : file);
    if (isCover) {
        mountOn(directory, user);
        startServer();
    }
    close(device);
    if (isMemory) {
        char byte;
        if (read(doesHang[0], &byte, 1) != 1)
            return 1;
        while (!isWaiting(pid))
            usleep(1000);
        printf("\n");
        fflush(stdout);
    }
    /* The server stops to answer with the first signal of the test. */
    int signal = 0;
    while (sigwait(&signals, &signal) == 0)
        kill(server, SIGUSR1);
}
