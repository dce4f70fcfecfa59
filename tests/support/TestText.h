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

/// The name of a row, for the list of tests.
inline constexpr auto rowName = [](const auto &info) { return std::string(info.param.name); };
