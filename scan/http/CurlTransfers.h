#pragma once

#include "scan/http/CurlMultiPool.h"
#include "scan/http/HttpClient.h"

#include <QtGlobal>

#include <chrono>
#include <optional>
#include <stop_token>

#include <curl/curl.h>

namespace tidewick
{

/// Runs transfers in the calling thread.
class CurlTransfers
{
public:
    using Clock = std::chrono::steady_clock;

    CurlTransfers(CurlMultiPool::Handle multi, const std::stop_token &stop);

    /// Takes part in each wait for as long as it lives.
    class Running
    {
    public:
        Running(const CurlTransfers &transfers, CURL *easy);
        ~Running();
        Q_DISABLE_COPY_MOVE(Running)

    private:
        CURLM *m_multi;
        CURL *m_easy;
    };

    struct End
    {
        /// The transfer that has ended; null where none has.
        CURL *easy;
        /// Nothing where curl saw no fault in it; the callbacks of `easy` have what came.
        std::optional<HttpError> error;
    };

    /// Until one of the running transfers ends, the deadline comes or a stop is requested.
    End wait(Clock::time_point deadline) const;

    /// One transfer, from its start to its end.
    std::optional<HttpError> run(CURL *easy, Clock::time_point deadline) const;

private:
    struct Wake
    {
        CURLM *multi;
        void operator()() const { curl_multi_wakeup(multi); }
    };

    std::stop_token m_stop;
    CurlMultiPool::Handle m_multi;
    std::stop_callback<Wake> m_wakeWhenStopped;
};

} // namespace tidewick
