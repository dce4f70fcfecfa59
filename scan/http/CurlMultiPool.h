#pragma once

#include <QtGlobal>

#include <memory>
#include <mutex>
#include <vector>

#include <curl/curl.h>

namespace tidewick
{

/// Multi handles for one attempt after another. A multi handle keeps the certificate authorities
/// that its transfers have read, because reading them takes longer than the rest of a request. May
/// be used from any thread.
class CurlMultiPool
{
public:
    CurlMultiPool() = default;
    Q_DISABLE_COPY_MOVE(CurlMultiPool)

    struct GiveBack
    {
        CurlMultiPool *pool;
        void operator()(CURLM *multi) const { pool->give(multi); }
    };
    using Handle = std::unique_ptr<CURLM, GiveBack>;

    /// The handle that was given back last, so that few are kept; or a new one.
    Handle take();

private:
    struct Cleanup
    {
        void operator()(CURLM *multi) const { curl_multi_cleanup(multi); }
    };

    void give(CURLM *multi);

    std::mutex m_mutex;
    std::vector<std::unique_ptr<CURLM, Cleanup>> m_spare;
};

} // namespace tidewick
