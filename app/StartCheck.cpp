#include "app/StartCheck.h"

#include <array>
#include <cstddef>

#include <pthread.h>
#include <sys/mman.h>

namespace tidewick
{
namespace
{

/// Ten for the store's work, three or four of the toolkit, up to four of a desktop's theme, and
/// room for the tools.
constexpr std::size_t neededThreads = 24;

/// Of address space, beside the program and its libraries. Measured with the panel open: 1.1 GB in
/// all. Most of it is what the C library reserves for the memory of each thread.
constexpr std::size_t neededMemory = std::size_t{1} << 30U;

void *waitForUnlock(void *mutex)
{
    pthread_mutex_lock(static_cast<pthread_mutex_t *>(mutex));
    pthread_mutex_unlock(static_cast<pthread_mutex_t *>(mutex));
    return nullptr;
}

/// Whether so many can run at the same time.
bool canStartThreads()
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    std::array<pthread_t, neededThreads> threads{};
    std::size_t started = 0;
    while (started < threads.size() &&
           pthread_create(&threads.at(started), nullptr, waitForUnlock, &mutex) == 0)
        ++started;
    pthread_mutex_unlock(&mutex);
    for (std::size_t i = 0; i < started; ++i)
        pthread_join(threads.at(i), nullptr);
    return started == threads.size();
}

bool canReserveMemory()
{
    void *const place =
        mmap(nullptr, neededMemory, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return place != MAP_FAILED && munmap(place, neededMemory) == 0;
}

} // namespace

std::optional<std::string> missingResource()
{
    if (!canReserveMemory())
        return "too little memory: 1 GiB of address space is needed";
    if (!canStartThreads())
        return "too few threads: " + std::to_string(neededThreads) + " are needed";
    return std::nullopt;
}

} // namespace tidewick
