#pragma once

#include "scan/http/HttpClient.h"

#include <optional>

#include <curl/curl.h>

namespace tidewick
{

/// What curl's code for the end of a transfer says in our terms; nothing where curl saw no fault.
std::optional<HttpError> httpError(CURLcode code);

} // namespace tidewick
