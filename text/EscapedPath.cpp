#include "text/EscapedPath.h"

#include "text/Utf8.h"

#include <string_view>

namespace tidewick
{
namespace
{

/// The byte that a backslash at the front of `text` stands for, which is taken off with it.
std::optional<char> takeEscape(QByteArrayView &text)
{
    constexpr std::string_view letters = "btnfr\\";
    constexpr std::string_view bytes = "\b\t\n\f\r\\";
    if (text.size() < 2)
        return std::nullopt;
    const size_t letter = letters.find(text[1]);
    if (letter != std::string_view::npos) {
        text = text.sliced(2);
        return bytes[letter];
    }
    if (text[1] != 'x' || text.size() < 4)
        return std::nullopt;
    constexpr std::string_view digits = "0123456789abcdef";
    const size_t high = digits.find(text[2]);
    const size_t low = digits.find(text[3]);
    if (high == std::string_view::npos || low == std::string_view::npos || high + low == 0)
        return std::nullopt;
    text = text.sliced(4);
    return char(high * 16 + low);
}

} // namespace

std::optional<QString> unescapedPath(QStringView printed)
{
    const QByteArray bytes = printed.toUtf8();
    QByteArray path;
    for (QByteArrayView rest = bytes; !rest.isEmpty();) {
        if (rest[0] == '\\') {
            const auto byte = takeEscape(rest);
            if (!byte)
                return std::nullopt;
            path += *byte;
            continue;
        }
        const bool isControl =
            rest[0] == '^' && rest.size() > 1 && rest[1] >= '@' && rest[1] <= '_';
        if (isControl || rest[0] == '\0')
            return std::nullopt;
        path += rest[0];
        rest = rest.sliced(1);
    }
    return decodeUtf8(path);
}

} // namespace tidewick
