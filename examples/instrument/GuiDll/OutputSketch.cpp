#include "examples/instrument/GuiDll/OutputSketch.h"

#include "examples/instrument/GuiDll/Appearance.h"
#include "examples/instrument/GuiDll/Quantity.h"

#include <QPainter>

#include <cmath>

namespace Orvia {

namespace {

constexpr double levelGrid = 20; ///< dB between the lines

} // namespace

void OutputSketch::setOutput(double frequency, double level, bool isOn)
{
    m_frequency = frequency;
    m_level = level;
    m_isOn = isOn;
    update();
}

void OutputSketch::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintGrid(&painter);

    const QPointF top(xOf(m_frequency), yOf(m_level));
    const QColor color = m_isOn ? Appearance::on : Appearance::dimText;
    painter.setPen(QPen(color, 3, m_isOn ? Qt::SolidLine : Qt::DotLine, Qt::FlatCap));
    painter.drawLine(QPointF(top.x(), plot().bottom()), top);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(top, 5, 5);
}

void OutputSketch::paintGrid(QPainter *painter) const
{
    const QRectF area = plot();
    const auto drawText = [painter](double x, double y, Qt::Alignment alignment, const QString &text) {
        QRectF place(0, 0, 100, 20);
        place.moveCenter({x, y});
        if (alignment & Qt::AlignRight)
            place.moveRight(x);
        painter->setPen(Appearance::dimText);
        painter->drawText(place, static_cast<int>(alignment | Qt::AlignVCenter), text);
    };
    // Powers of ten and whole decibels have no rounding errors.
    // NOLINTBEGIN(clang-analyzer-security.FloatLoopCounter)
    for (double decade = frequencySetting.minimum; decade <= frequencySetting.maximum; decade *= 10) {
        const double x = xOf(decade);
        painter->setPen(Appearance::grid);
        painter->drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        drawText(x, area.bottom() + 14, Qt::AlignHCenter, shortText(frequencyQuantity, decade));
    }
    for (double line = levelSetting.minimum; line <= levelSetting.maximum; line += levelGrid) {
        const double y = yOf(line);
        painter->setPen(Appearance::grid);
        painter->drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        drawText(area.left() - 8, y, Qt::AlignRight, shortText(levelQuantity, line));
    }
    // NOLINTEND(clang-analyzer-security.FloatLoopCounter)
}

QRectF OutputSketch::plot() const
{
    return QRectF(rect()).adjusted(88, 14, -24, -30);
}

double OutputSketch::xOf(double frequency) const
{
    const double decades = std::log10(frequencySetting.maximum / frequencySetting.minimum);
    return plot().left() + plot().width() * std::log10(frequency / frequencySetting.minimum) / decades;
}

double OutputSketch::yOf(double level) const
{
    const double range = levelSetting.maximum - levelSetting.minimum;
    return plot().bottom() - plot().height() * (level - levelSetting.minimum) / range;
}

} // namespace Orvia
