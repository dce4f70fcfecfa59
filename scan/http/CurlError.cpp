#include "scan/http/CurlError.h"

namespace tidewick
{

std::optional<HttpError> httpError(CURLcode code)
{
    switch (code) {
    case CURLE_OK:
        return std::nullopt;
    case CURLE_COULDNT_CONNECT:
        return HttpError{HttpError::cannotConnect};
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE:
        return HttpError{HttpError::connectionLost};
#if LIBCURL_VERSION_NUM >= 0x080600
    case CURLE_TOO_LARGE: // a limit of its own: the number of header lines
        return HttpError{HttpError::headersTooLong};
#endif
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        return HttpError{HttpError::badServerResponse};
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE: // nothing to verify against
        return HttpError{HttpError::certificateUntrusted};
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_USE_SSL_FAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
        return HttpError{HttpError::secureConnectionFailed};
    default:
        return HttpError{HttpError::unknown};
    }
}

} // namespace tidewick
