#include "scan/http/CurlTransfers.h"

#include "scan/http/CurlError.h"

namespace tidewick
{

CurlTransfers::CurlTransfers(const std::stop_token &stop)
    : m_stop(stop), m_wakeWhenStopped(stop, Wake{m_multi.get()})
{
}

std::optional<HttpError> CurlTransfers::run(CURL *easy, Clock::time_point deadline) const
{
    curl_multi_add_handle(m_multi.get(), easy);
    const std::optional<HttpError> error = waitForEnd(deadline);
    curl_multi_remove_handle(m_multi.get(), easy);
    return error;
}

std::optional<HttpError> CurlTransfers::waitForEnd(Clock::time_point deadline) const
{
    while (!m_stop.stop_requested()) {
        int running = 0;
        curl_multi_perform(m_multi.get(), &running);
        if (running == 0)
            return result();
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return HttpError{HttpError::timedOut};
        curl_multi_poll(m_multi.get(), nullptr, 0, int(left), nullptr);
    }
    return HttpError{HttpError::cancelled};
}

std::optional<HttpError> CurlTransfers::result() const
{
    int others = 0;
    const CURLMsg *message = curl_multi_info_read(m_multi.get(), &others);
    return message == nullptr ? HttpError{} : httpError(message->data.result);
}

} // namespace tidewick
