#pragma once

#include "model/ServiceType.h"

#include <QString>
#include <QtGlobal>

namespace tidewick
{

/// The category of a listener, by its process name and command line whatever their case, and
/// where those tell nothing by its port. Pure.
ServiceType detectServiceType(qint64 port, const QString &command, const QString &fullCommand);

} // namespace tidewick
