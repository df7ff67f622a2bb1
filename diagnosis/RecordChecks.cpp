#include "diagnosis/RecordChecks.h"

#include "Startup/ModuleRules.h"

#include <algorithm>

namespace Orvia {

namespace {

constexpr int maxNameLength = 31;
constexpr int knownTypes[] = {VQMBaseModule, VQMLoadable,       VQMLoadable2,
                              VQMPlugIn,     VQMPlugInLoadable, VQMPlugInLoadable2};

struct FixedRole
{
    int id;
    const char *name;
};
constexpr FixedRole fixedRoles[] = {
    {VQMDatabaseId, "Database"}, {VQMScpiId, "ScpiDll"}, {VQMGuiId, "GuiDll"}};

QString hexadecimal(int bits)
{
    return "0x" + QString::number(static_cast<unsigned int>(bits), 16);
}

Finding defect(const QString &file, const char *rule, const QString &text)
{
    return {Finding::Severity::Defect, rule, file, 0, 0, text};
}

Findings checkName(const QString &file, const QString &whose, const QString &name)
{
    if (name.size() > maxNameLength)
        return {defect(file, "name-too-long",
                       QString("%1 name, \"%2\", has %3 characters; %4 are kept")
                           .arg(whose, name)
                           .arg(name.size())
                           .arg(maxNameLength))};
    return {};
}

} // namespace

Findings checkRecord(const QString &file, const ModuleProbe::Record &record)
{
    Findings findings = checkName(file, "the record's", record.name);
    const int type = record.moduleType;
    const bool isKnown =
        std::find(std::begin(knownTypes), std::end(knownTypes), type) != std::end(knownTypes);
    if ((type & validModuleTypes) == 0)
        findings.append(
            defect(file, unknownTypeRule, "module type " + hexadecimal(type) + " is unknown: never kept"));
    else if (!isKnown)
        findings.append(defect(file, "type-inexact",
                               "module type " + hexadecimal(type) +
                                   " is none of the known ones: kept, but counted in no group"));
    if (record.families == 0)
        findings.append(defect(file, "no-family", "serves no instrument family: never kept"));
    if ((record.parts & ~allModuleParts) != 0)
        findings.append(defect(file, "part-unknown",
                               "parts " + hexadecimal(record.parts) + " have bits beyond " +
                                   hexadecimal(allModuleParts)));
    if (isKnown && type != VQMBaseModule && (record.parts & allModuleParts) == 0)
        findings.append(defect(file, "no-part", "has none of the parts: never initialized"));
    for (const FixedRole &role : fixedRoles) {
        if (type != VQMPlugIn && record.defaultId == role.id &&
            (type != VQMBaseModule || record.name != QLatin1String(role.name)))
            findings.append({Finding::Severity::Note, "fixed-id", file, 0, 0,
                             QString("id %1 is that of the base module %2").arg(role.id).arg(role.name)});
    }
    return findings;
}

Findings checkObject(const QString &file, const ModuleProbe::Object &object)
{
    Findings findings = checkName(file, "the object's", object.name);
    if (object.id != object.handedId)
        findings.append(
            defect(file, "id-differs",
                   QString("was created with id %1, but answers %2").arg(object.handedId).arg(object.id)));
    return findings;
}

} // namespace Orvia
