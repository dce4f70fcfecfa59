#pragma once

#include "scan/ToolRunner.h"
#include "scan/ToolTable.h"
#include "scan/http/HttpClient.h"

#include <memory>

namespace tidewick
{

/// The operating system as a scan and a kill see it. A task copies this value, so that it may
/// outlive whoever started it.
struct SystemInterfaces
{
    std::shared_ptr<const ToolRunner> tools;
    ToolTable toolTable;
    std::shared_ptr<const HttpClient> http = nullptr;
};

} // namespace tidewick
