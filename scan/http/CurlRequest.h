#pragma once

#include "scan/http/LoopbackUrl.h"

#include <QByteArray>

#include <memory>

#include <curl/curl.h>

namespace tidewick
{

struct EasyCleanup
{
    void operator()(CURL *easy) const { curl_easy_cleanup(easy); }
};
using EasyHandle = std::unique_ptr<CURL, EasyCleanup>;

/// A request that goes to loopback addresses alone, by no proxy and with no credential. It trusts
/// the certificate authorities of the system, and those in the PEM file `authorities` unless that
/// is empty. An empty `userAgent` means that it carries no such header. Bytes that are no HTTP come
/// as a body without headers; the body of a HEAD is the caller's to refuse.
EasyHandle newRequest(const LoopbackUrl &url, const QByteArray &method, const QByteArray &userAgent,
                      const QByteArray &authorities);

/// The shortest request that there is: its request line. An HTTP/1.0 request needs no Host.
EasyHandle newBareRequest(const LoopbackUrl &url);

/// A TLS handshake with the address of `url`, and no request after it. Takes any certificate.
EasyHandle newTlsHello(LoopbackUrl url);

} // namespace tidewick
