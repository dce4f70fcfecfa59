#include "libexec/names/EscapedText.h"

#include <clocale>
#include <cwchar>
#include <cwctype>

namespace tidewick::libexec
{
namespace
{

void addByteCode(std::string &escaped, unsigned char byte)
{
    constexpr std::string_view hex = "0123456789abcdef";
    escaped += "\\x";
    escaped += hex[byte >> 4];
    escaped += hex[byte & 15];
}

/// How many bytes the printable UTF-8 character takes that the text begins with, or 0.
size_t printableLength(std::string_view text)
{
    // The application reads UTF-8, whatever the locale. To load which characters are printable
    // takes a fifth of this program's time, so only a path that is not ASCII does.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): this program has one thread
    static const char *const locale = setlocale(LC_CTYPE, "C.UTF-8");
    mbstate_t state{};
    wchar_t character = 0;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is its own
    const size_t length = mbrtowc(&character, text.data(), text.size(), &state);
    const bool isPrintable = locale && length <= text.size() && iswprint(wint_t(character)) != 0;
    return isPrintable ? length : 0;
}

} // namespace

std::string escapeWord(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte < 0x7f && c != '\\')
            escaped += c;
        else
            addByteCode(escaped, byte);
    }
    return escaped;
}

std::string escapePath(std::string_view path)
{
    std::string escaped;
    while (!path.empty()) {
        const auto byte = static_cast<unsigned char>(path[0]);
        if (byte >= 0x80) {
            if (const size_t length = printableLength(path); length > 0) {
                escaped += path.substr(0, length);
                path.remove_prefix(length);
                continue;
            }
            addByteCode(escaped, byte);
        } else if (byte == 0x7f) {
            escaped += "\\x7f";
        } else if (byte == '\\') {
            escaped += "\\\\";
        } else if (byte >= 0x20) {
            escaped += path[0];
        } else {
            // The order of the control characters is that of their letters from 8 to 13.
            constexpr std::string_view letters("btn\0fr", 6);
            const char letter = byte >= 8 && byte <= 13 && byte != 11 ? letters[byte - 8] : '\0';
            escaped += letter != '\0' ? '\\' : '^';
            escaped += letter != '\0' ? letter : char(byte + '@');
        }
        path.remove_prefix(1);
    }
    return escaped;
}

} // namespace tidewick::libexec
