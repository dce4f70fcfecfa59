#include "platform/session/DesktopEntry.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tidewick
{
namespace
{

const QByteArray header = "[Desktop Entry]";

const QByteArray byteOrderMark = "\xef\xbb\xbf";

constexpr std::array<std::pair<char, char>, 5> escapes{
    {{' ', 's'}, {'\n', 'n'}, {'\t', 't'}, {'\r', 'r'}, {'\\', '\\'}}};

QString unescaped(const QString &text)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        QChar character = text[i];
        if (character == QLatin1Char('\\') && i + 1 < text.size()) {
            const QChar code = text[++i];
            for (const auto &[plain, letter] : escapes) {
                if (code == QLatin1Char(letter))
                    character = QLatin1Char(plain);
            }
        }
        result += character;
    }
    return result;
}

/// Only a space at the beginning is escaped; a reader would skip it.
QString escaped(const QString &text)
{
    QString result;
    for (const QChar character : text) {
        QString piece(character);
        for (const auto &[plain, letter] : escapes) {
            if (character == QLatin1Char(plain) && (plain != ' ' || result.isEmpty()))
                piece = QLatin1Char('\\') + QString(QLatin1Char(letter));
        }
        result += piece;
    }
    return result;
}

/// Blanks around it and a carriage return at its end do not count.
bool isHeader(const QByteArray &line)
{
    return line.trimmed() == header;
}

/// The key that the line sets; empty if it sets none.
QString keyOf(const QByteArray &line)
{
    const qsizetype equals = line.indexOf('=');
    return equals < 1 || line.startsWith('#') ? QString()
                                              : QString::fromUtf8(line.left(equals)).trimmed();
}

} // namespace

DesktopEntry::DesktopEntry(const QByteArray &text)
    : m_mark(text.startsWith(byteOrderMark) ? byteOrderMark : QByteArray()),
      m_lines(text.mid(m_mark.size()).split('\n'))
{
    if (m_lines.last().isEmpty())
        m_lines.removeLast();
    if (std::none_of(m_lines.begin(), m_lines.end(), isHeader))
        m_lines.append(header);
}

DesktopEntry::Group DesktopEntry::group() const
{
    const auto first = std::find_if(m_lines.begin(), m_lines.end(), isHeader);
    Group group{first - m_lines.begin() + 1, m_lines.size()};
    for (qsizetype i = group.begin; i < m_lines.size(); ++i) {
        if (m_lines[i].trimmed().startsWith('[')) {
            group.end = i;
            break;
        }
    }
    return group;
}

qsizetype DesktopEntry::find(const QString &key) const
{
    const Group lines = group();
    for (qsizetype i = lines.begin; i < lines.end; ++i) {
        if (keyOf(m_lines[i]) == key)
            return i;
    }
    return -1;
}

std::optional<QString> DesktopEntry::value(const QString &key) const
{
    const qsizetype line = find(key);
    if (line < 0)
        return std::nullopt;
    const QByteArray &text = m_lines[line];
    return unescaped(QString::fromUtf8(text.mid(text.indexOf('=') + 1)).trimmed());
}

void DesktopEntry::setValue(const QString &key, const QString &value)
{
    const QByteArray text = (key + QLatin1Char('=') + escaped(value)).toUtf8();
    const qsizetype line = find(key);
    if (line < 0)
        m_lines.insert(group().end, text);
    else
        m_lines[line] = text;
}

void DesktopEntry::remove(const QString &key)
{
    for (qsizetype line = find(key); line >= 0; line = find(key))
        m_lines.removeAt(line);
}

QByteArray DesktopEntry::toText() const
{
    return m_mark + m_lines.join('\n') + '\n';
}

QString quotedForExec(const QString &argument)
{
    QString quoted;
    for (const QChar character : argument) {
        if (QStringLiteral("\"`$\\").contains(character))
            quoted += QLatin1Char('\\');
        else if (character == QLatin1Char('%'))
            quoted += QLatin1Char('%'); // a single % begins a field code
        quoted += character;
    }
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

} // namespace tidewick
