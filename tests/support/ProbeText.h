#pragma once

#include "scan/http/HttpProbe.h"

#include <ostream>
#include <string>

namespace tidewick
{

// Lets GoogleTest print the result of a probe as the triple that it is.
// NOLINTNEXTLINE(readability-identifier-naming)
inline void PrintTo(const ProbeResult &result, std::ostream *out)
{
    *out << "(" << (result.isAccessible ? "true" : "false") << ", "
         << (result.statusCode ? std::to_string(*result.statusCode) : "absent") << ", "
         << (result.serverInfo ? '"' + result.serverInfo->toStdString() + '"' : "absent") << ")";
}

} // namespace tidewick
