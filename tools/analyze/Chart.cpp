#include "diagnosis/StartupSummary.h"
#include "tools/analyze/ChartLayout.h"
#include "tools/analyze/Reports.h"

#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>

namespace Orvia {

namespace {

using namespace Chart;

constexpr double margin = 16;
constexpr double titleHeight = 34;
constexpr double textLine = 14;
constexpr double barHeight = 16;
constexpr double rowHeight = 30;
constexpr double axisHeight = 24;

// Written out twice rather than with custom properties, which not every viewer of SVG knows.
constexpr const char *style = R"(
text { font: 11px "DejaVu Sans", sans-serif; fill: #1f2328; }
.title { font-size: 17px; font-weight: bold; }
.free, .stage-name { stroke: #ffffff; stroke-width: 3; paint-order: stroke; stroke-linejoin: round; }
.page { fill: #ffffff; } .band { fill: #f3f5f8; } .grid { stroke: #d5dae1; } .mute { fill: #59636e; }
.leader { stroke: #8c959f; } .stage-line { stroke: #8250df; stroke-dasharray: 3 2; }
.stage-name { fill: #6639ba; } .alarm { fill: #b3141f; } .bad { stroke: #cf222e; stroke-width: 2; }
.phase { fill: #c8d1da; } .open, .look-up { fill: #a5d0f7; } .describe { fill: #8fdde0; }
.create { fill: #9be3b4; } .initialize { fill: #f5c779; } .start-gui { fill: #f2a98c; }
.stage { fill: #cfb5f5; } .terminate, .close { fill: #d3c6b8; }
@media (prefers-color-scheme: dark) {
text { fill: #e6edf3; } .free, .stage-name { stroke: #0d1117; }
.page { fill: #0d1117; } .band { fill: #161c24; } .grid { stroke: #30363d; } .mute { fill: #9aa4af; }
.leader { stroke: #6e7681; } .stage-line { stroke: #a371f7; }
.stage-name { fill: #c7a5ff; } .alarm { fill: #ff8a84; } .bad { stroke: #ff6b66; }
.phase { fill: #465260; } .open, .look-up { fill: #20609e; } .describe { fill: #17767c; }
.create { fill: #217f47; } .initialize { fill: #7a4d06; } .start-gui { fill: #85401f; }
.stage { fill: #553098; } .terminate, .close { fill: #55493c; }
}
)";

QString number(double value)
{
    return QString::number(value, 'f', 1);
}

/// Writes one chart; the plot's left edge is at `left`.
class Painter
{
public:
    Painter(QByteArray *out, double left) : m_xml(out), m_left(left) { m_xml.setAutoFormatting(true); }

    void begin(double width, double height)
    {
        m_xml.writeStartDocument();
        m_xml.writeStartElement("svg");
        m_xml.writeDefaultNamespace("http://www.w3.org/2000/svg");
        m_xml.writeAttribute("width", number(width));
        m_xml.writeAttribute("height", number(height));
        m_xml.writeAttribute("viewBox", "0 0 " + number(width) + ' ' + number(height));
        m_xml.writeTextElement("style", style);
        box(-m_left, 0, width, height, "page");
    }
    void end()
    {
        m_xml.writeEndElement();
        m_xml.writeEndDocument();
    }
    void box(double x, double y, double width, double height, const QString &kind,
             const std::string &tip = {})
    {
        m_xml.writeStartElement("rect");
        m_xml.writeAttribute("x", number(m_left + x));
        m_xml.writeAttribute("y", number(y));
        m_xml.writeAttribute("width", number(width));
        m_xml.writeAttribute("height", number(height));
        m_xml.writeAttribute("class", kind);
        if (!tip.empty())
            m_xml.writeTextElement("title", printable(tip));
        m_xml.writeEndElement();
    }
    void verticalLine(double x, double top, double bottom, const char *kind)
    {
        m_xml.writeEmptyElement("path");
        m_xml.writeAttribute("d", 'M' + number(m_left + x) + ' ' + number(top) + 'V' + number(bottom));
        m_xml.writeAttribute("class", kind);
    }
    void text(double x, double y, const std::string &text, const char *kind = "",
              const char *anchor = "start")
    {
        m_xml.writeStartElement("text");
        m_xml.writeAttribute("x", number(m_left + x));
        m_xml.writeAttribute("y", number(y));
        if (*kind != 0)
            m_xml.writeAttribute("class", kind);
        if (QLatin1String(anchor) != QLatin1String("start"))
            m_xml.writeAttribute("text-anchor", anchor);
        m_xml.writeCharacters(printable(text));
        m_xml.writeEndElement();
    }

private:
    /// XML has no place for control characters.
    static QString printable(const std::string &text)
    {
        QString result = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
        for (QChar &character : result) {
            if (character < QChar(' ') || character.unicode() >= 0xfffe)
                character = QChar::ReplacementCharacter;
        }
        return result;
    }

    QXmlStreamWriter m_xml;
    const double m_left;
};

void paintBars(Painter *painter, const Row &row, double top)
{
    for (const Bar &bar : row.bars) {
        const QString kind = QString::fromStdString(bar.kind) + (bar.isBad ? " bad" : "");
        if (bar.isTick)
            painter->box(bar.x, top + barHeight + 3, bar.width, 5, kind, bar.tip);
        else
            painter->box(bar.x, top + 1, bar.width, barHeight, kind, bar.tip);
    }
}

void paintAxis(Painter *painter, const Layout &layout, double top, double bottom)
{
    double step = std::pow(10, std::floor(std::log10(layout.end / 8)));
    for (const double factor : {2.0, 2.5, 2.0}) { // 1, 2, 5, 10
        if (layout.end / step > 12)
            step *= factor;
    }
    const double unit = layout.end < 2e6 ? 1e3 : 1e6;
    for (int mark = 0; mark * step <= layout.end * (1 + 1e-9); ++mark) {
        const double time = mark * step;
        const double x = time / layout.end * plotWidth;
        painter->verticalLine(x, top, bottom, "grid");
        painter->text(x, bottom + textLine + 2,
                      QString::number(time / unit, 'g', 6).toStdString() + (unit < 1e6 ? " ms" : " s"),
                      "mute", "middle");
    }
}

/// The names beside the bars below which they stand, joined to them where they had to go further down.
void paintThread(Painter *painter, const Row &row, double top)
{
    paintBars(painter, row, top);
    for (const Label &label : row.labels) {
        const double y = top + barHeight + textLine * (label.level + 1);
        painter->verticalLine(label.x, top + 1, y, "leader");
        painter->text(label.x + 3, y, label.text, "free");
    }
}

void paintModule(Painter *painter, const Row &row, double top)
{
    paintBars(painter, row, top + 2);
    const double y = top + barHeight - 1;
    for (const Label &label : row.labels) {
        if (label.place == Label::Place::Inside)
            painter->text(label.x + label.width / 2, y, label.text, "", "middle");
        else if (label.place == Label::Place::Left)
            painter->text(label.x + label.width, y, label.text, "free", "end");
        else
            painter->text(label.x, y, label.text, "free");
    }
}

void paintTitle(Painter *painter, const Row &row, double left, double top)
{
    painter->text(left, top + barHeight - 1, row.title);
    if (!row.mark.empty())
        painter->text(left, top + barHeight + 11, row.mark, row.isBad ? "alarm" : "mute");
}

double titleWidth(const Layout &layout)
{
    double width = 0;
    for (const auto &rows : {layout.threads, layout.modules}) {
        for (const Row &row : rows)
            width = std::max({width, widthOf(row.title), widthOf(row.mark)});
    }
    return width;
}

/// How far the texts reach to the right.
double reach(const Layout &layout, const std::vector<std::string> &notes)
{
    double x = plotWidth;
    const auto extend = [&x](const std::vector<Label> &labels) {
        for (const Label &label : labels)
            x = std::max(x, label.x + label.width);
    };
    extend(layout.stages);
    for (const auto &rows : {layout.threads, layout.modules}) {
        for (const Row &row : rows)
            extend(row.labels);
    }
    for (const std::string &note : notes)
        x = std::max(x, widthOf(note));
    return x;
}

double threadHeight(const Row &row)
{
    return barHeight + textLine * row.levels + 8;
}

} // namespace

QByteArray chart(const StartupRecord &record, bool all)
{
    const Layout layout = layOut(record, all);
    std::vector<std::string> notes = summaryOf(record);
    const std::string title = "Start-up: " + notes.front();
    notes.erase(notes.begin());
    notes.push_back(endOfRun(record).front());

    const double left = 2 * margin + titleWidth(layout);
    const double stagesTop = margin + titleHeight;
    const double plotTop = stagesTop + textLine * layout.stageLevels + 4;
    double plotBottom = plotTop + rowHeight * static_cast<double>(layout.modules.size());
    for (const Row &row : layout.threads)
        plotBottom += threadHeight(row);
    const double notesTop = plotBottom + axisHeight + margin;

    QByteArray out;
    Painter painter(&out, left);
    painter.begin(left + reach(layout, notes) + margin,
                  notesTop + textLine * static_cast<double>(notes.size()) + margin);
    painter.text(margin - left, margin + 16, title, "title");
    bool isBand = true;
    double top = plotTop;
    for (const Row &row : layout.threads)
        top += threadHeight(row);
    for (std::size_t i = 0; i < layout.modules.size(); ++i, isBand = !isBand) {
        if (isBand)
            painter.box(margin - left, top + rowHeight * static_cast<double>(i), left - margin + plotWidth,
                        rowHeight, "band");
    }
    paintAxis(&painter, layout, plotTop, plotBottom);
    for (const Label &stage : layout.stages) {
        const double y = stagesTop + textLine * (layout.stageLevels - stage.level);
        painter.verticalLine(stage.x, y - 10, plotBottom, "stage-line");
        painter.text(stage.x + 3, y, stage.text, "stage-name");
    }
    top = plotTop;
    for (const Row &row : layout.threads) {
        paintTitle(&painter, row, margin - left, top);
        paintThread(&painter, row, top);
        top += threadHeight(row);
    }
    for (const Row &row : layout.modules) {
        paintTitle(&painter, row, margin - left, top);
        paintModule(&painter, row, top);
        top += rowHeight;
    }
    for (std::size_t i = 0; i < notes.size(); ++i)
        painter.text(0, notesTop + textLine * static_cast<double>(i), notes[i],
                     i + 1 == notes.size() && !record.exitCode() ? "alarm" : "");
    painter.end();
    return out;
}

} // namespace Orvia
