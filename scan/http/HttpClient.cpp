#include "scan/http/HttpClient.h"

#include "text/Utf8.h"
#include "text/VisibleText.h"

#include <QStringList>

namespace tidewick
{
namespace
{

QString singleLineText(QByteArrayView bytes)
{
    return visibleText(decodeUtf8(bytes.toByteArray()).value_or(QString::fromLatin1(bytes)))
        .trimmed();
}

} // namespace

void HttpHeaders::addLine(QByteArrayView line)
{
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    const bool continues = line.startsWith(' ') || line.startsWith('\t');
    if (continues && m_lines.endsWith('\n'))
        m_lines.chop(1);
    m_lines += line;
    m_lines += '\n';
}

std::optional<QString> HttpHeaders::value(QByteArrayView name) const
{
    QStringList values;
    qsizetype start = 0;
    while (start < m_lines.size()) {
        const qsizetype end = m_lines.indexOf('\n', start);
        const QByteArrayView line = QByteArrayView(m_lines).sliced(start, end - start);
        const qsizetype colon = line.indexOf(':');
        if (colon >= 0 && line.first(colon).compare(name, Qt::CaseInsensitive) == 0)
            values.append(singleLineText(line.sliced(colon + 1)));
        start = end + 1;
    }
    return values.isEmpty() ? std::nullopt : std::optional(values.join(QStringLiteral(", ")));
}

} // namespace tidewick
