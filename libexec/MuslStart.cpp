// What libstdc++ and the system's C library do for a program, and nobody does for a static one with
// musl: ps and lsof hold it only there.
#include <string_view>

#include <cstdint>
#include <cstdlib>

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

// The names are the linker's and libstdc++'s.
extern "C" const ElfW(Ehdr) __ehdr_start;

namespace
{

/// Makes what only the start had to write read-only (ld(1), "relro"). Without it the program ends.
__attribute__((constructor)) void protectRelocatedData()
{
    const auto base = reinterpret_cast<uintptr_t>(&__ehdr_start);
    const auto pageSize = uintptr_t(sysconf(_SC_PAGESIZE));
    const auto *const headers = reinterpret_cast<const ElfW(Phdr) *>(base + __ehdr_start.e_phoff);
    for (int i = 0; i < __ehdr_start.e_phnum; ++i) {
        if (headers[i].p_type != PT_GNU_RELRO)
            continue;
        const uintptr_t start = (base + headers[i].p_vaddr) / pageSize * pageSize;
        const uintptr_t end =
            (base + headers[i].p_vaddr + headers[i].p_memsz) / pageSize * pageSize;
        if (mprotect(reinterpret_cast<void *>(start), end - start, PROT_READ) != 0)
            abort();
    }
}

} // namespace

// libstdc++'s headers call these where one of their checks fails.
namespace std
{

void __throw_out_of_range_fmt(const char * /*text*/, ...)
{
    abort();
}

#ifdef _GLIBCXX_ASSERTIONS
void __glibcxx_assert_fail(const char * /*file*/, int /*line*/, const char * /*function*/,
                           const char * /*condition*/) noexcept
{
    abort();
}
#endif

} // namespace std
