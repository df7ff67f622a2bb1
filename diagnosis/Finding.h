#pragma once

#include <QList>
#include <QString>

class QJsonObject;

namespace Orvia {

/// One line of a diagnosis.
struct Finding
{
    enum class Severity
    {
        Defect, ///< something is wrong
        Note,   ///< worth knowing, and meant to be so
    };

    Severity severity = Severity::Defect;
    QString rule; ///< short stable name for machines and tests, such as "file-missing"
    QString file; ///< what it is about: the configuration or a module library
    int line = 0; ///< counted from 1; 0 for the file as a whole
    int column = 0;
    QString text; ///< what is so and why, no full stop
};

using Findings = QList<Finding>;

int countDefects(const Findings &findings);

/// As compilers write them: "FILE:LINE:COLUMN: defect: TEXT [RULE]", one line whatever the text; control
/// characters in it become \u and their code.
QString toText(const Finding &finding);

/// Members severity ("defect" or "note"), rule, file, text and, when it is about a line, line and column.
QJsonObject toJson(const Finding &finding);

} // namespace Orvia
