#pragma once

#include "libexec/proc/TextBuffer.h"

#include <string>

/// What `add` adds to a text, which has room for it. `add` must not call this again.
template <class Add>
std::string addedText(Add add)
{
    static std::string memory(size_t(1U << 20U), '\0'); // filling it takes longer than most tests
    tidewick::libexec::TextBuffer text(memory);
    add(text);
    return std::string(text.view());
}
