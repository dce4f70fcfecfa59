#include "scan/Enrichment.h"

namespace tidewick
{

PortInfo enrichPortInfo(PortInfo record)
{
    return record;
}

} // namespace tidewick
