#include "scan/ToolRunner.h"

#include <cstdio>

namespace tidewick
{

void printError(const char *prefix, const std::exception &error)
{
    std::printf("%s%s\n", prefix, error.what());
    std::fflush(stdout);
}

} // namespace tidewick
