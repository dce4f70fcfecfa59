#include "scan/http/TlsHello.h"

#include "scan/http/CurlRequest.h"
#include "scan/http/HttpAnswer.h"

#include <algorithm>
#include <chrono>

namespace tidewick
{
namespace
{

using Clock = CurlTransfers::Clock;

/// How long a hello may stay without an answer before something else is asked. A server that
/// closes a plain request that fast refuses a hello about as fast.
Clock::duration promptness(Clock::duration timeToClose)
{
    return std::max<Clock::duration>(4 * timeToClose, std::chrono::milliseconds(2));
}

} // namespace

// A TLS server may need the rest of the second for its handshake. Another server may wait just as
// long for what it takes for the rest of a command: Redis, which closes on the header "Host", does.
// To a request without headers such a server says at once what it speaks.
bool answersTlsHello(const LoopbackUrl &url, Clock::duration timeToClose,
                     const CurlTransfers &transfers, Clock::time_point deadline)
{
    const EasyHandle hello = newTlsHello(url);
    const CurlTransfers::Running runningHello(transfers, hello.get());
    CurlTransfers::End end =
        transfers.wait(std::min(deadline, Clock::now() + promptness(timeToClose)));
    if (end.easy == hello.get())
        return !end.error;

    const EasyHandle bare = newBareRequest(url);
    const HttpAnswer answer(bare.get(), url, "GET");
    const CurlTransfers::Running runningBare(transfers, bare.get());
    end = transfers.wait(deadline);
    if (end.easy == bare.get() && answer.start() == HttpAnswer::Start::nothing)
        end = transfers.wait(deadline);
    if (end.easy == hello.get())
        return !end.error;
    return answer.start() == HttpAnswer::Start::tlsRecord;
}

} // namespace tidewick
