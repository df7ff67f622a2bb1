#include "diagnosis/Finding.h"

#include <QJsonObject>

#include <algorithm>

namespace Orvia {

namespace {

QString severityText(Finding::Severity severity)
{
    return severity == Finding::Severity::Defect ? QStringLiteral("defect") : QStringLiteral("note");
}

/// Names come out of files: characters that would break the line, or command the terminal, are spelled out.
QString onOneLine(const QString &text)
{
    QString line;
    for (const QChar character : text) {
        const QChar::Category category = character.category();
        if (category == QChar::Other_Control || category == QChar::Separator_Line ||
            category == QChar::Separator_Paragraph)
            line += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            line += character;
    }
    return line;
}

} // namespace

int countDefects(const Findings &findings)
{
    return static_cast<int>(std::count_if(findings.begin(), findings.end(), [](const Finding &finding) {
        return finding.severity == Finding::Severity::Defect;
    }));
}

QString toText(const Finding &finding)
{
    QString place = finding.file;
    if (finding.line > 0)
        place += QStringLiteral(":%1:%2").arg(finding.line).arg(finding.column);
    return onOneLine(place + ": " + severityText(finding.severity) + ": " + finding.text + " [" +
                     finding.rule + ']');
}

QJsonObject toJson(const Finding &finding)
{
    QJsonObject object{{"severity", severityText(finding.severity)},
                       {"rule", finding.rule},
                       {"file", finding.file},
                       {"text", finding.text}};
    if (finding.line > 0) {
        object["line"] = finding.line;
        object["column"] = finding.column;
    }
    return object;
}

} // namespace Orvia
