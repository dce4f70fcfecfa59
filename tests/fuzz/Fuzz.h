#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// Ends the run where a promise is broken, with the promise in words.
inline void promise(bool isKept, const char *words)
{
    if (isKept)
        return;
    std::fprintf(stderr, "broken promise: %s\n", words);
    std::abort();
}

inline QByteArray bytesOf(const uint8_t *data, size_t size)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as bytes
    return {reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)};
}

/// The input split at each NUL, or at another byte, as several texts in one; at least `count` of
/// them.
inline QList<QByteArray> pieces(const uint8_t *data, size_t size, qsizetype count,
                                char separator = '\0')
{
    QList<QByteArray> result = bytesOf(data, size).split(separator);
    while (result.size() < count)
        result.append(QByteArray());
    return result;
}

/// ps counts days, hours, minutes and seconds of a process's life: a time beyond 64 bits cannot
/// come from it, and ends the program. Of 14 digits, days are within them.
inline bool isBeyondAnyLife(const QByteArray &elapsed)
{
    int digits = 0;
    for (const char character : elapsed) {
        digits = character >= '0' && character <= '9' ? digits + 1 : 0;
        if (digits > 14)
            return true;
    }
    return false;
}

/// No character of it ends a line, moves the pen or hides what follows.
inline bool isSingleLine(const QString &text)
{
    for (const char32_t character : text.toUcs4()) {
        const auto category = QChar::category(character);
        if (category == QChar::Other_Control || category == QChar::Other_Format ||
            category == QChar::Separator_Line || category == QChar::Separator_Paragraph)
            return false;
    }
    return true;
}
