#pragma once

#include "scan/http/HttpClient.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// Sends nothing: writes down each request and answers with `answer`, in the caller's thread.
class RecordingHttpClient : public tidewick::HttpClient
{
public:
    using Answer = std::function<tidewick::HttpOutcome(const tidewick::HttpRequest &)>;

    explicit RecordingHttpClient(Answer answer) : m_answer(std::move(answer)) {}

    /// As if nothing listened anywhere.
    static std::shared_ptr<RecordingHttpClient> refusing();

    tidewick::HttpOutcome send(const tidewick::HttpRequest &request,
                               tidewick::TlsEvidence &evidence,
                               const std::stop_token &stop) const override;

    std::vector<tidewick::HttpRequest> requests() const;

private:
    Answer m_answer;
    mutable std::mutex m_mutex;
    mutable std::vector<tidewick::HttpRequest> m_requests;
};
