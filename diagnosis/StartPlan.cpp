#include "diagnosis/StartPlan.h"

#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <iterator>

namespace Orvia {

namespace {

constexpr int wholeModule = -1;

/// The first pass is the Database parts', the second one the rest's.
constexpr int partsOfPasses[] = {VQMDatabasePart, VQMScpiPart | VQMGuiPart};

QString hexadecimal(std::uint32_t bits)
{
    return "0x" + QString::number(bits, 16);
}

class Planner
{
public:
    Planner(const QString &fileName, HwESigGenFamily family, Findings *findings)
        : m_fileName(fileName), m_findings(findings)
    {
        m_plan.family = family;
    }

    void discover(const QList<PlanCandidate> &candidates)
    {
        int plugInCounter = 0;
        for (const PlanCandidate &candidate : candidates) {
            if (QFileInfo(candidate.path).baseName() != skippedBaseName)
                decide(candidate, &plugInCounter);
        }
        std::stable_sort(
            m_plan.modules.begin(), m_plan.modules.end(),
            [](const StartPlan::Module &left, const StartPlan::Module &right) { return left.id < right.id; });
        checkRequired();
    }

    void bringUp(bool gui)
    {
        baseModules(false);
        plugIns(partsOfPasses[0]);
        if (gui)
            baseModules(true);
        plugIns(partsOfPasses[1]);
        stage(SuCompleteFinished, wholeModule);
    }

    const StartPlan &plan() const { return m_plan; }

private:
    void decide(const PlanCandidate &candidate, int *plugInCounter)
    {
        const std::optional<ModuleProbe::Record> &record = candidate.probe.record;
        if (!record) {
            m_plan.refused.append({candidate.path, Refusal::None});
            return;
        }
        const Refusal refusal = refusalOf(record->moduleType, record->families, m_plan.family);
        if (refusal != Refusal::None) {
            m_plan.refused.append({candidate.path, refusal});
            if (refusal == Refusal::Family)
                add(Finding::Severity::Note, "module-family",
                    fileName(candidate) + " is dropped: it serves families " + hexadecimal(record->families) +
                        ", the instrument is of " + hexadecimal(m_plan.family),
                    candidate);
            return;
        }
        const int id = moduleIdOf(record->moduleType, record->defaultId, plugInCounter);
        if (!candidate.probe.object) {
            m_plan.refused.append({candidate.path, Refusal::None});
            return;
        }
        for (const StartPlan::Module &other : std::as_const(m_plan.modules)) {
            if (other.id == id)
                add(Finding::Severity::Defect, "module-id-twice",
                    fileName(candidate) + ": id " + QString::number(id) + " is that of " + other.path +
                        " too",
                    candidate);
        }
        m_plan.modules.append(
            {candidate.path, candidate.probe.object->name.left(31), id, record->moduleType, record->parts});
    }

    void checkRequired()
    {
        const auto row = std::find_if(
            std::begin(requiredModules), std::end(requiredModules),
            [this](const RequiredModules &candidate) { return (candidate.families & m_plan.family) != 0; });
        if (row == std::end(requiredModules))
            return;
        for (const RequiredModules::Slot &slot : row->modules) {
            const bool found =
                std::any_of(m_plan.modules.begin(), m_plan.modules.end(),
                            [&](const StartPlan::Module &module) { return module.id == slot.id; });
            if (slot.id != 0 && !found)
                m_findings->append(
                    {Finding::Severity::Defect, "module-required", m_fileName, 0, 0,
                     QStringLiteral("required module %1 (id %2) is not among the modules loaded")
                         .arg(slot.name)
                         .arg(slot.id)});
        }
    }

    void baseModules(bool guiPass)
    {
        for (qsizetype i = 0; i < m_plan.modules.size(); ++i) {
            const StartPlan::Module &module = m_plan.modules[i];
            if (module.moduleType == VQMBaseModule && (module.name == guiModuleName) == guiPass) {
                initialize(i, wholeModule);
                ++m_baseModulesUp;
            }
        }
        const auto count =
            std::count_if(m_plan.modules.begin(), m_plan.modules.end(),
                          [](const StartPlan::Module &module) { return module.moduleType == VQMBaseModule; });
        if (m_baseModulesUp >= count)
            stage(SuModulesFinished, wholeModule);
    }

    void plugIns(int parts)
    {
        for (const PlugInType &row : plugInTypes) {
            for (qsizetype i = 0; i < m_plan.modules.size(); ++i) {
                const StartPlan::Module &module = m_plan.modules[i];
                if ((module.moduleType & row.type) != 0 && (module.parts & parts) != 0)
                    initialize(i, module.parts & parts);
            }
            if (row.finished != SuInvalid)
                stage(row.finished, parts);
        }
    }

    void initialize(qsizetype module, int parts) { m_plan.steps.append({module, SuInvalid, parts}); }
    void stage(ESuStage stage, int parts) { m_plan.steps.append({-1, stage, parts}); }

    static QString fileName(const PlanCandidate &candidate) { return QFileInfo(candidate.path).fileName(); }
    void add(Finding::Severity severity, const char *rule, const QString &text,
             const PlanCandidate &candidate)
    {
        m_findings->append({severity, rule, m_fileName, candidate.line, candidate.column, text});
    }

    QString m_fileName;
    Findings *m_findings;
    StartPlan m_plan;
    qsizetype m_baseModulesUp = 0;
};

QString typeText(int moduleType)
{
    if (moduleType == VQMBaseModule)
        return QStringLiteral("base module");
    QStringList texts;
    for (const PlugInType &row : plugInTypes) {
        if ((moduleType & row.type) != 0)
            texts.append(QString(row.text).trimmed().toLower());
    }
    return texts.join(" and ") + " (" + hexadecimal(static_cast<std::uint32_t>(moduleType)) + ')';
}

QString kindText(const StartPlan::Module &module, int parts)
{
    const auto row =
        std::find_if(std::begin(plugInTypes), std::end(plugInTypes),
                     [&](const PlugInType &type) { return (module.moduleType & type.type) != 0; });
    return parts < 0 || row == std::end(plugInTypes) ? QString() : QString(row->text);
}

/// Of a group: how many modules it has, and how many of them declare each part.
struct GroupCount
{
    QString name;
    int modules = 0;
    int parts[3] = {0, 0, 0};
};

QList<GroupCount> countGroups(const StartPlan &plan)
{
    QList<GroupCount> groups{{"loadables"}, {"plug-ins"}, {"plug-in loadables"}};
    for (const StartPlan::Module &module : plan.modules) {
        const int group = groupOf(module.moduleType);
        if (group < 0)
            continue;
        ++groups[group].modules;
        for (int part = 0; part < 3; ++part)
            groups[group].parts[part] += (module.parts >> part) & 1;
    }
    return groups;
}

const char *reasonText(Refusal reason)
{
    return reason == Refusal::Family ? "family" : reason == Refusal::Type ? "type" : "module";
}

} // namespace

StartPlan makeStartPlan(const QString &fileName, const QList<PlanCandidate> &candidates,
                        HwESigGenFamily family, bool gui, Findings *findings)
{
    Planner planner(fileName, family, findings);
    planner.discover(candidates);
    planner.bringUp(gui);
    return planner.plan();
}

QStringList stepTexts(const StartPlan &plan)
{
    QStringList texts;
    for (const StartPlan::Step &step : plan.steps) {
        const QString parts = step.parts < 0 ? QString() : "    Parts: " + partsText(step.parts);
        if (step.module < 0) {
            texts.append(QString("Stage: ") + stageText(step.stage) + parts);
        } else {
            const StartPlan::Module &module = plan.modules[step.module];
            texts.append("Initializing " + kindText(module, step.parts) + module.name +
                         (step.parts < 0 ? "..." : parts));
        }
    }
    return texts;
}

QString toText(const StartPlan &plan)
{
    QString text = "start-up of family " + hexadecimal(plan.family) + "\n  loaded:\n";
    for (const StartPlan::Module &module : plan.modules)
        text +=
            QString("%1  %2  %3\n").arg(module.id, 9).arg(module.name, -20).arg(typeText(module.moduleType));
    if (!plan.refused.isEmpty())
        text += "  dropped:\n";
    for (const StartPlan::Refused &refused : plan.refused)
        text += "    " + QFileInfo(refused.path).fileName() + " (" + reasonText(refused.reason) + ")\n";
    text += "  groups:\n";
    for (const GroupCount &group : countGroups(plan))
        text += QString("    %1: %2 (parts: Database %3, Scpi %4, Gui %5)\n")
                    .arg(group.name)
                    .arg(group.modules)
                    .arg(group.parts[0])
                    .arg(group.parts[1])
                    .arg(group.parts[2]);
    text += "  steps:\n";
    for (const QString &step : stepTexts(plan))
        text += "    " + step.trimmed() + '\n';
    return text;
}

QJsonObject toJson(const StartPlan &plan)
{
    QJsonArray modules;
    for (const StartPlan::Module &module : plan.modules)
        modules.append(QJsonObject{{"path", module.path},
                                   {"name", module.name},
                                   {"id", module.id},
                                   {"type", module.moduleType},
                                   {"parts", module.parts}});
    QJsonArray refused;
    for (const StartPlan::Refused &row : plan.refused)
        refused.append(QJsonObject{{"path", row.path}, {"reason", reasonText(row.reason)}});
    QJsonObject groups;
    for (const GroupCount &group : countGroups(plan))
        groups[group.name] = QJsonObject{{"modules", group.modules},
                                         {"database", group.parts[0]},
                                         {"scpi", group.parts[1]},
                                         {"gui", group.parts[2]}};
    return {{"family", static_cast<qint64>(plan.family)},
            {"modules", modules},
            {"refused", refused},
            {"groups", groups},
            {"steps", QJsonArray::fromStringList(stepTexts(plan))}};
}

} // namespace Orvia
