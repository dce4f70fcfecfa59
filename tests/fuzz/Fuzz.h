#pragma once

#include <QByteArray>
#include <QList>

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

/// The input cut at each NUL, as several texts in one; always at least `count` of them.
inline QList<QByteArray> pieces(const uint8_t *data, size_t size, qsizetype count)
{
    QList<QByteArray> result = bytesOf(data, size).split('\0');
    while (result.size() < count)
        result.append(QByteArray());
    return result;
}
