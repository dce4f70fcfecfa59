#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace tidewick
{

/// The `[Desktop Entry]` group of a desktop file (freedesktop.org's Desktop Entry Specification
/// 1.5). All other lines, also those of other groups, are kept as they are.
class DesktopEntry
{
public:
    /// Takes any bytes. A line that is not UTF-8 or not of the format is kept and ignored.
    explicit DesktopEntry(const QByteArray &text = {});

    /// The first value of `key`, with its escapes undone; nothing if the key is missing.
    std::optional<QString> value(const QString &key) const;
    void setValue(const QString &key, const QString &value);
    void remove(const QString &key);

    QByteArray toText() const;

private:
    /// The lines of the group, from the one after its header to the one before the next header.
    struct Group
    {
        qsizetype begin = 0;
        qsizetype end = 0;
    };

    Group group() const;
    qsizetype find(const QString &key) const;

    /// The byte order mark where the text begins with one; it is no part of the first line.
    QByteArray m_mark;
    QList<QByteArray> m_lines;
};

/// `argument` as one word of an Exec value, before the escapes that every value gets.
QString quotedForExec(const QString &argument);

} // namespace tidewick
