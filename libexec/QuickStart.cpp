// The start of ps on x86-64, where the C library begins with several dozen cpuid instructions: in a
// virtual machine each of them is a trap, and together they take ten times as long as all the rest.
// So what needs no C library is answered before it starts: the three queries for a live process
// whose arguments are plain ASCII. For anything else the usual start goes on as if nothing had
// happened.
//
// Until then there is neither memory to take nor anything thread-local, and the C library's own
// functions may not be called: hence the system calls and the few memory functions in here. The
// file is compiled with options that keep the compiler from calling others.
#include "libexec/cells/ProcessCells.h"
#include "libexec/proc/Words.h"

#include <climits>
#include <cstddef>

#include <fcntl.h>
#include <sys/syscall.h>

// In place of the C library's, which choose their code for the processor at its start.
extern "C" {

void *memcpy(void *to, const void *from, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        static_cast<char *>(to)[i] = static_cast<const char *>(from)[i];
    return to;
}

void *memmove(void *to, const void *from, size_t size)
{
    if (to <= from)
        return memcpy(to, from, size);
    while (size-- > 0)
        static_cast<char *>(to)[size] = static_cast<const char *>(from)[size];
    return to;
}

void *memset(void *to, int byte, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        static_cast<char *>(to)[i] = char(byte);
    return to;
}

int memcmp(const void *a, const void *b, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        const int difference =
            static_cast<const unsigned char *>(a)[i] - static_cast<const unsigned char *>(b)[i];
        if (difference != 0)
            return difference;
    }
    return 0;
}

void *memchr(const void *text, int byte, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        if (static_cast<const char *>(text)[i] == char(byte))
            return const_cast<char *>(static_cast<const char *>(text)) + i;
    }
    return nullptr;
}

size_t strlen(const char *text)
{
    size_t size = 0;
    while (text[size] != 0)
        ++size;
    return size;
}

} // extern "C"

namespace tidewick::tools
{
namespace
{

/// USER_HZ, a part of the kernel's interface.
constexpr double ticksPerSecond = 100;
constexpr size_t fileLimit = (1U << 17U) - 1;

long systemCall(long number, long first, long second, long third)
{
    long result = number;
    asm volatile("syscall"
                 : "+a"(result)
                 : "D"(first), "S"(second), "d"(third)
                 : "rcx", "r11", "memory");
    return result;
}

/// Text in memory that is there from the start.
template <size_t Capacity>
class Text
{
public:
    std::string_view view() const { return {m_bytes, m_size}; }

    void add(std::string_view text)
    {
        for (const char byte : text) {
            if (m_size < Capacity)
                m_bytes[m_size++] = byte;
        }
    }

    /// The file of the process; of the system where `pid` is empty. False where it is not read to
    /// its end.
    bool read(std::string_view pid, std::string_view name)
    {
        Text<64> path;
        path.add("/proc/");
        path.add(pid);
        path.add(name);
        path.add({"\0", 1});
        const long file = systemCall(SYS_open, reinterpret_cast<long>(path.view().data()),
                                     O_RDONLY | O_CLOEXEC, 0);
        if (file < 0)
            return false;
        long count = 0;
        do {
            count = systemCall(SYS_read, file, reinterpret_cast<long>(m_bytes + m_size),
                               long(Capacity - m_size));
            m_size += size_t(count > 0 ? count : 0);
        } while (count > 0 && m_size < Capacity);
        systemCall(SYS_close, file, 0, 0);
        return count == 0;
    }

private:
    char m_bytes[Capacity] = {};
    size_t m_size = 0;
};

/// Prints it and ends; returns where nothing could be printed.
template <size_t Capacity>
void finish(const Text<Capacity> &line)
{
    std::string_view rest = line.view();
    long written = 1;
    // A stop and its end cut a write to a full pipe short.
    while (!rest.empty() && written > 0) {
        written = systemCall(SYS_write, 1, reinterpret_cast<long>(rest.data()), long(rest.size()));
        rest.remove_prefix(size_t(written > 0 ? written : 0));
    }
    if (rest.size() < line.view().size())
        systemCall(SYS_exit_group, rest.empty() ? 0 : 1, 0, 0);
}

void answerCommand(std::string_view pid)
{
    constinit static Text<fileLimit> text;
    constinit static Text<fileLimit + 1> line;
    if (!text.read(pid, "/cmdline"))
        return;
    const size_t last = text.view().find_last_not_of('\0');
    if (last == std::string_view::npos)
        return;
    for (const char byte : text.view().substr(0, last + 1)) {
        if (byte != 0 && (byte < 0x20 || byte > 0x7e))
            return;
        line.add({byte == 0 ? " " : &byte, 1});
    }
    line.add("\n");
    finish(line);
}

void answerNumbers(std::string_view pid, bool isElapsed)
{
    constinit static Text<4096> statText;
    constinit static Text<4096> uptime;
    constinit static Text<8192> status;
    if (!statText.read(pid, "/stat") || !uptime.read({}, "uptime"))
        return;
    const auto stat = parseStat(statText.view());
    if (!stat || (!isElapsed && !status.read(pid, "/status")))
        return;
    const double seconds = lifeTime(*stat, uptime.view(), ticksPerSecond);
    Text<64> line;
    if (isElapsed) {
        line.add(elapsedText(uint64_t(seconds)));
    } else {
        line.add(residentCell(status.view()));
        line.add(" ");
        line.add(percentage(*stat, seconds, ticksPerSecond));
    }
    line.add("\n");
    finish(line);
}

} // namespace

/// `stack` is what the kernel leaves for a new program: the number of arguments, then those.
extern "C" void quickStart(const char *const *stack)
{
    if (reinterpret_cast<intptr_t>(stack[0]) != 5)
        return;
    const auto argument = [stack](int index) {
        return std::string_view(stack[1 + index]);
    };
    const std::string_view pid = argument(2);
    const auto number = parseNumber(pid);
    if (argument(1) != "-p" || argument(3) != "-o" || !number || *number == 0 ||
        *number > INT_MAX || pid[0] == '0')
        return;
    if (argument(4) == "command=")
        answerCommand(pid);
    else if (argument(4) == "rss=,%cpu=" || argument(4) == "etime=")
        answerNumbers(pid, argument(4) == "etime=");
}

} // namespace tidewick::tools

// The kernel starts the program here. The stack is given back as it was.
asm(R"(
    .globl tidewickStart
tidewickStart:
    endbr64
    mov %rsp, %rdi
    push %rdx
    sub $8, %rsp
    call quickStart
    add $8, %rsp
    pop %rdx
    jmp _start
)");
