#pragma once

#include "scan/http/HttpClient.h"

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>

#include <curl/curl.h>

namespace tidewick
{

/// Runs transfers, one after another, in the calling thread.
class CurlTransfers
{
public:
    using Clock = std::chrono::steady_clock;

    explicit CurlTransfers(const std::stop_token &stop);

    /// Until the transfer has ended, the deadline has come or a stop is requested. Nothing where
    /// curl saw no fault in it; the callbacks of `easy` have what came.
    std::optional<HttpError> run(CURL *easy, Clock::time_point deadline) const;

private:
    struct MultiCleanup
    {
        void operator()(CURLM *multi) const { curl_multi_cleanup(multi); }
    };
    struct Wake
    {
        CURLM *multi;
        void operator()() const { curl_multi_wakeup(multi); }
    };

    std::optional<HttpError> waitForEnd(Clock::time_point deadline) const;
    std::optional<HttpError> result() const;

    std::stop_token m_stop;
    std::unique_ptr<CURLM, MultiCleanup> m_multi{curl_multi_init()};
    std::stop_callback<Wake> m_wakeWhenStopped;
};

} // namespace tidewick
