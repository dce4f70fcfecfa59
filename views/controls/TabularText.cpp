#include "views/controls/TabularText.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextCharFormat>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace tidewick
{
namespace
{

/// What a character lacks on each side to be as wide as the widest digit; 0 unless it is a digit.
class Margins
{
public:
    explicit Margins(const QFont &font) : m_metrics(font)
    {
        for (const QChar digit : QStringLiteral("0123456789"))
            m_widest = std::max(m_widest, m_metrics.horizontalAdvance(digit));
    }

    qreal operator()(QChar character) const
    {
        const bool isDigit = character >= QLatin1Char('0') && character <= QLatin1Char('9');
        return isDigit ? (m_widest - m_metrics.horizontalAdvance(character)) / 2 : 0;
    }

private:
    QFontMetricsF m_metrics;
    qreal m_widest = 0;
};

QTextLayout::FormatRange spacing(int position, qreal width)
{
    QTextLayout::FormatRange range;
    range.start = position;
    range.length = 1;
    range.format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
    range.format.setFontLetterSpacing(width);
    return range;
}

} // namespace

TabularText::TabularText(QQuickItem *parent) : Picture(parent)
{
    connect(this, &TabularText::changed, this, &TabularText::layOut);
    layOut();
}

TabularText::~TabularText() = default;

void TabularText::layOut()
{
    m_layout = layoutOf(m_text);
    m_indent = m_text.isEmpty() ? 0 : Margins(m_font)(m_text[0]);
    const QTextLine line = m_layout->lineAt(0);
    setBaselineOffset(line.ascent());
    setImplicitSize(std::ceil(m_indent + line.naturalTextWidth()),
                    std::ceil(QFontMetricsF(m_font).height()));
    elide();
    redraw();
}

void TabularText::elide()
{
    const bool isTruncated = width() < implicitWidth();
    if (!isTruncated && !m_isTruncated)
        return;
    const QFontMetricsF metrics(m_font);
    const qreal margins = implicitWidth() - metrics.horizontalAdvance(m_text);
    m_layout = layoutOf(
        isTruncated ? metrics.elidedText(m_text, Qt::ElideRight, std::max(0.0, width() - margins))
                    : m_text);
    if (isTruncated == m_isTruncated)
        return;
    m_isTruncated = isTruncated;
    Q_EMIT truncatedChanged();
}

std::unique_ptr<QTextLayout> TabularText::layoutOf(const QString &text) const
{
    const Margins margins(m_font);
    QList<QTextLayout::FormatRange> spacings;
    for (int i = 0; i < text.size(); ++i) {
        const qreal next = i + 1 < text.size() ? margins(text[i + 1]) : 0;
        spacings.append(spacing(i, margins(text[i]) + next));
    }
    auto layout = std::make_unique<QTextLayout>(text, m_font);
    layout->setFormats(spacings);
    QTextOption option;
    option.setUseDesignMetrics(true);
    layout->setTextOption(option);
    layout->beginLayout();
    layout->createLine();
    layout->endLayout();
    return layout;
}

void TabularText::geometryChange(const QRectF &now, const QRectF &before)
{
    Picture::geometryChange(now, before);
    if (now.width() != before.width())
        elide();
}

void TabularText::draw(QPainter &painter, const QRectF & /*place*/, double pixelsPerPoint) const
{
    painter.scale(pixelsPerPoint, pixelsPerPoint);
    painter.setPen(m_color);
    m_layout->draw(&painter, {m_indent, 0});
}

} // namespace tidewick
