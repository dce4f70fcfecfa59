#include "scan/http/CurlTransfers.h"

#include "scan/http/CurlError.h"

#include <utility>

namespace tidewick
{

CurlTransfers::CurlTransfers(CurlMultiPool::Handle multi, const std::stop_token &stop)
    : m_stop(stop), m_multi(std::move(multi)), m_wakeWhenStopped(stop, Wake{m_multi.get()})
{
}

CurlTransfers::Running::Running(const CurlTransfers &transfers, CURL *easy)
    : m_multi(transfers.m_multi.get()), m_easy(easy)
{
    curl_multi_add_handle(m_multi, m_easy);
}

CurlTransfers::Running::~Running()
{
    curl_multi_remove_handle(m_multi, m_easy);
}

CurlTransfers::End CurlTransfers::wait(Clock::time_point deadline) const
{
    while (!m_stop.stop_requested()) {
        int count = 0;
        curl_multi_perform(m_multi.get(), &count);
        if (const CURLMsg *message = curl_multi_info_read(m_multi.get(), &count))
            return {message->easy_handle, httpError(message->data.result)};
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return {nullptr, HttpError{HttpError::timedOut}};
        curl_multi_poll(m_multi.get(), nullptr, 0, int(left), nullptr);
    }
    return {nullptr, HttpError{HttpError::cancelled}};
}

std::optional<HttpError> CurlTransfers::run(CURL *easy, Clock::time_point deadline) const
{
    const Running running(*this, easy);
    return wait(deadline).error;
}

} // namespace tidewick
