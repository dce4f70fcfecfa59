#include "libexec/holders/NamedPorts.h"

#include "libexec/proc/Words.h"

namespace tidewick::libexec
{

PortSet portsIn(std::string_view text)
{
    const auto isDotted = [text](size_t dot, size_t digit) {
        return dot < text.size() && digit < text.size() && text[dot] == '.' && isDigit(text[digit]);
    };
    PortSet ports;
    bool isInUrl = false;
    for (size_t at = 0; at < text.size(); ++at) {
        if (!isDigit(text[at])) {
            // A URL ends with its argument, or at a blank.
            if (static_cast<unsigned char>(text[at]) <= ' ')
                isInUrl = false;
            else if (text[at] == ':' && text.substr(at).starts_with("://"))
                isInUrl = true;
            continue;
        }
        const size_t start = at;
        while (at + 1 < text.size() && isDigit(text[at + 1]))
            ++at;
        // Before the text's start the places wrap to ones beyond its end.
        if (isInUrl || isDotted(start - 1, start - 2) || isDotted(at + 1, at + 2) ||
            (text[start] == '0' && at > start))
            continue;
        const auto number = parseNumber(text.substr(start, at + 1 - start));
        if (number && *number < ports.size())
            ports.set(size_t(*number));
    }
    return ports;
}

} // namespace tidewick::libexec
