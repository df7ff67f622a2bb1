#include "diagnosis/Finding.h"

#include <QJsonObject>

#include <algorithm>

namespace Orvia {

namespace {

QString severityText(Finding::Severity severity)
{
    return severity == Finding::Severity::Defect ? QStringLiteral("defect") : QStringLiteral("note");
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
    return place + ": " + severityText(finding.severity) + ": " + finding.text + " [" + finding.rule + ']';
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
