#include "examples/instrument/GuiDll/Quantity.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace Orvia {

namespace {

constexpr QChar thinSpace(0x2009);
constexpr QChar minusSign(0x2212);
constexpr QChar microSign(0xb5);

double powerOfTen(int exponent)
{
    return std::pow(10.0, exponent);
}

/// To the resolution. Divided, not multiplied: that gives the number nearest to the decimal one.
double rounded(const Quantity &quantity, double value)
{
    const double scale = powerOfTen(quantity.decimals);
    return std::round(value * scale) / scale + 0.0; // no "-0"
}

QString plainText(const Quantity &quantity, double value)
{
    const int exponent = unitOf(quantity, value).exponent;
    QString text =
        QString::number(rounded(quantity, value) / powerOfTen(exponent), 'f', quantity.decimals + exponent);
    return text.replace('-', minusSign);
}

} // namespace

const Unit &unitOf(const Quantity &quantity, double value)
{
    const double size = std::abs(rounded(quantity, value));
    for (const Unit &unit : quantity.units)
        if (size >= powerOfTen(unit.exponent))
            return unit;
    return quantity.units.back();
}

QString quantityText(const Quantity &quantity, double value)
{
    QString text = plainText(quantity, value);
    if (const qsizetype point = text.indexOf('.'); point >= 0)
        for (qsizetype position = point + 4; position < text.size(); position += 4)
            text.insert(position, thinSpace);
    return text + ' ' + unitOf(quantity, value).name;
}

QString shortText(const Quantity &quantity, double value)
{
    static const QRegularExpression zeros("\\.?0+$");
    QString text = plainText(quantity, value);
    if (text.contains('.'))
        text.remove(zeros);
    return text + ' ' + unitOf(quantity, value).name;
}

std::optional<double> parseQuantity(const Quantity &quantity, const QString &text, const Unit &defaultUnit)
{
    QString compact = text;
    compact.remove(QRegularExpression("\\s"));
    compact.replace(',', '.').replace(minusSign, '-').replace('u', microSign);
    const QRegularExpression syntax("^([+-]?[0-9.]+(?:[eE][+-]?[0-9]+)?)(\\D*)$");
    const QRegularExpressionMatch match = syntax.match(compact);
    const QString unitName = match.captured(2);
    const Unit *unit = &defaultUnit;
    if (!unitName.isEmpty()) {
        const auto named =
            std::find_if(quantity.units.begin(), quantity.units.end(), [&](const Unit &candidate) {
                return QString(candidate.name).startsWith(unitName, Qt::CaseInsensitive);
            });
        if (named == quantity.units.end())
            return std::nullopt;
        unit = &*named;
    }
    bool isNumber = false;
    const double number = match.captured(1).toDouble(&isNumber);
    const double value = rounded(quantity, number * powerOfTen(unit->exponent));
    const NumberSetting &setting = quantity.setting;
    if (!isNumber || !(value >= setting.minimum && value <= setting.maximum))
        return std::nullopt;
    return value;
}

double stepped(const Quantity &quantity, double value, int exponent, int count)
{
    return std::clamp(rounded(quantity, value + count * powerOfTen(exponent)), quantity.setting.minimum,
                      quantity.setting.maximum);
}

std::optional<int> placeAt(const QString &text, int position)
{
    if (position < 0 || position >= text.size() || !text[position].isDigit())
        return std::nullopt;
    const int point = static_cast<int>(text.indexOf(text.contains('.') ? '.' : ' '));
    if (position < point)
        return point - 1 - position;
    const QStringView fraction = QStringView(text).mid(point + 1, position - point);
    return -static_cast<int>(
        std::count_if(fraction.begin(), fraction.end(), [](QChar character) { return character.isDigit(); }));
}

int positionOf(const QString &text, int place)
{
    int position = 0;
    while (!placeAt(text, position) && position < text.size())
        ++position;
    while (placeAt(text, position).value_or(place + 1) > place && position < text.size())
        ++position;
    return position;
}

} // namespace Orvia
