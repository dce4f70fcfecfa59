#include "scan/http/CurlMultiPool.h"

namespace tidewick
{

CurlMultiPool::Handle CurlMultiPool::take()
{
    const std::lock_guard lock(m_mutex);
    if (m_spare.empty())
        return {curl_multi_init(), {this}};
    Handle multi(m_spare.back().release(), {this});
    m_spare.pop_back();
    return multi;
}

void CurlMultiPool::give(CURLM *multi)
{
    const std::lock_guard lock(m_mutex);
    m_spare.emplace_back(multi);
}

} // namespace tidewick
