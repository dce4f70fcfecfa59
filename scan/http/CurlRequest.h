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
/// the certificate authorities in the PEM file `authorities`, those of the system where that is
/// empty. An empty `userAgent` means that it carries no such header.
EasyHandle newRequest(const LoopbackUrl &url, const QByteArray &method, const QByteArray &userAgent,
                      const QByteArray &authorities);

/// A TLS handshake with the address of `url`, and no request after it. Takes any certificate.
EasyHandle newTlsHello(LoopbackUrl url);

} // namespace tidewick
