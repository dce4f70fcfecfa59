#include "libexec/names/KnownNames.h"

#include "libexec/names/EscapedText.h"
#include "libexec/names/LowerCase.h"
#include "products/DevelopmentProcess.h"

namespace tidewick::libexec
{

bool isKnownName(std::string_view name)
{
    return isDevelopmentProcessName(lowerCase(escapeWord(name)));
}

} // namespace tidewick::libexec
