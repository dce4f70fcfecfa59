#include "libexec/cells/PrintedText.h"

#include <cstdint>
#include <cstdlib>

namespace tidewick::libexec
{
namespace
{

bool isPlain(unsigned char byte)
{
    return byte >= 0x20 && byte < 0x7f;
}

/// How long the UTF-8 sequence that begins with this byte is; 0: none does.
size_t sequenceLength(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead >= 0xc2 && lead <= 0xdf)
        return 2;
    if (lead >= 0xe0 && lead <= 0xef)
        return 3;
    return lead >= 0xf0 && lead <= 0xf4 ? 4 : 0;
}

/// What a text begins with.
struct Character
{
    uint32_t code = 0; ///< also of a byte that starts no UTF-8 sequence (RFC 3629)
    size_t length = 1;
};

Character firstCharacter(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const size_t length = sequenceLength(lead);
    if (length == 0 || length > text.size())
        return {};
    uint32_t code = length == 1 ? lead : lead & (0xffU >> (length + 1));
    for (const char c : text.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xc0U) != 0x80)
            return {};
        code = code << 6U | (byte & 0x3fU);
    }
    constexpr uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
    if (code < smallest[length] || code > 0x10ffff || isSurrogate)
        return {};
    return {code, length};
}

bool isPrintable(uint32_t code)
{
    const bool isControl = code < 0x20 || (code >= 0x7f && code < 0xa0);
    const bool isSeparator = code == 0x2028 || code == 0x2029;
    const bool isNoCharacter = (code & 0xfffeU) == 0xfffe || (code >= 0xfdd0 && code <= 0xfdef);
    return !isControl && !isSeparator && !isNoCharacter;
}

/// Adds what can be printed of `text`, and '?' for each thing that cannot.
void addPrintable(TextBuffer &line, std::string_view text)
{
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        if (isPrintable(character.code))
            line.add(text.substr(0, character.length));
        else
            line.add('?');
        text.remove_prefix(character.length);
    }
}

bool isLetterOrDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

} // namespace

bool namesUtf8(std::string_view locale)
{
    // LANGUAGE_TERRITORY.CODESET@MODIFIER, where "UTF-8" and "utf8" are one codeset.
    constexpr std::string_view utf8 = "utf8";
    size_t matched = 0;
    const size_t start = locale.find('.');
    if (start == std::string_view::npos)
        return false;
    for (const char c : locale.substr(start + 1)) {
        if (c == '@')
            break;
        if (!isLetterOrDigit(c))
            continue;
        const char lower = c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
        if (matched == utf8.size() || lower != utf8[matched])
            return false;
        ++matched;
    }
    return matched == utf8.size();
}

bool isUtf8Environment()
{
    for (const char *const variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): this program has one thread
        const char *const locale = std::getenv(variable);
        if (locale != nullptr && *locale != '\0')
            return namesUtf8(locale);
    }
    return false;
}

void joinArguments(TextBuffer &commandLine)
{
    commandLine.removeFromEnd('\0');
    commandLine.replaceAll('\0', ' ');
    commandLine.replaceAll('\n', ' ');
    if (commandLine.view().empty())
        commandLine.add('?');
}

void addPrinted(TextBuffer &line, std::string_view text, bool isUtf8)
{
    // ps takes a sequence by the length that its first byte tells. At a byte that begins none it
    // gives the characters up and goes on by bytes, to the end of the text.
    bool byCharacter = isUtf8;
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text[0]);
        const size_t length = sequenceLength(byte);
        byCharacter = byCharacter && length > 0 && length <= text.size();
        if (byCharacter) {
            addPrintable(line, text.substr(0, length));
            text.remove_prefix(length);
            continue;
        }
        if (isPlain(byte))
            line.add(text[0]);
        else
            line.add(byte < 0x80 ? '.' : '?');
        text.remove_prefix(1);
    }
}

} // namespace tidewick::libexec
