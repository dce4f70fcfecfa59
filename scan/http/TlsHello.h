#pragma once

#include "scan/http/CurlTransfers.h"
#include "scan/http/LoopbackUrl.h"

namespace tidewick
{

/// Whether the server at the address of `url`, which has closed a plain request without a byte,
/// speaks TLS. It took `timeToClose` to close it. Asks until the deadline at the latest.
bool answersTlsHello(const LoopbackUrl &url, CurlTransfers::Clock::duration timeToClose,
                     const CurlTransfers &transfers, CurlTransfers::Clock::time_point deadline);

} // namespace tidewick
