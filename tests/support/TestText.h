#pragma once

#include <QDebug>
#include <QString>

#include <ostream>
#include <string>

// Lets GoogleTest print Qt's texts as texts.
inline void PrintTo(const QString &text, std::ostream *out) // NOLINT(readability-identifier-naming)
{
    *out << '"' << text.toStdString() << '"';
}

/// Prints a row of a table of tests by its name.
template <class Row>
requires requires(const Row &row)
{
    std::string(row.name);
}
void PrintTo(const Row &row, std::ostream *out) // NOLINT(readability-identifier-naming)
{
    *out << row.name;
}

/// The name of a row, for the list of tests.
inline constexpr auto rowName = [](const auto &info) {
    return std::string(info.param.name);
};
