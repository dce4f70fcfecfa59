#pragma once

#include "model/ServiceType.h"

#include <QString>
#include <QtGlobal>

namespace tidewick
{

/// The category of a listener by its process name and command line, whatever their case, or by its
/// port if those tell nothing. Pure.
ServiceType detectServiceType(qint64 port, const QString &command, const QString &fullCommand);

} // namespace tidewick
