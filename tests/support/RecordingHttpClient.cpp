#include "tests/support/RecordingHttpClient.h"

std::shared_ptr<RecordingHttpClient> RecordingHttpClient::refusing()
{
    return std::make_shared<RecordingHttpClient>(
        [](const auto &) { return tidewick::HttpError{tidewick::HttpError::cannotConnect}; });
}

tidewick::HttpOutcome RecordingHttpClient::send(const tidewick::HttpRequest &request,
                                                tidewick::TlsEvidence & /*evidence*/,
                                                const std::stop_token & /*stop*/) const
{
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
    }
    return m_answer(request);
}

std::vector<tidewick::HttpRequest> RecordingHttpClient::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}
