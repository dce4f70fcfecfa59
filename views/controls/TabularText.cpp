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
        for (char digit = '0'; digit <= '9'; ++digit)
            m_widest = std::max(m_widest, m_metrics.horizontalAdvance(QLatin1Char(digit)));
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
    const Margins margins(m_font);
    QList<QTextLayout::FormatRange> spacings;
    for (int i = 0; i < m_text.size(); ++i) {
        const qreal next = i + 1 < m_text.size() ? margins(m_text[i + 1]) : 0;
        spacings.append(spacing(i, margins(m_text[i]) + next));
    }
    m_indent = m_text.isEmpty() ? 0 : margins(m_text[0]);
    m_layout = std::make_unique<QTextLayout>(m_text, m_font);
    m_layout->setFormats(spacings);
    QTextOption option;
    option.setUseDesignMetrics(true);
    m_layout->setTextOption(option);
    m_layout->beginLayout();
    QTextLine line = m_layout->createLine();
    if (line.isValid()) {
        line.setNumColumns(static_cast<int>(m_text.size()));
        setBaselineOffset(line.ascent());
    }
    m_layout->endLayout();
    setImplicitSize(line.isValid() ? std::ceil(m_indent + line.naturalTextWidth()) : 0,
                    std::ceil(QFontMetricsF(m_font).height()));
    redraw();
}

void TabularText::draw(QPainter &painter, const QRectF & /*place*/, double pixelsPerPoint) const
{
    painter.scale(pixelsPerPoint, pixelsPerPoint);
    painter.setPen(m_color);
    m_layout->draw(&painter, {m_indent, 0});
}

} // namespace tidewick
