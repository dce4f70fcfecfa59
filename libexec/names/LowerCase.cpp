#include "libexec/names/LowerCase.h"

namespace tidewick::libexec
{

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    for (char &c : lower) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

} // namespace tidewick::libexec
