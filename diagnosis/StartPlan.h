#pragma once

#include "Startup/ESuStage.h"
#include "Startup/ModuleRules.h"
#include "diagnosis/Finding.h"
#include "diagnosis/ModuleInspection.h"

#include <QJsonObject>
#include <QStringList>

namespace Orvia {

/// A module file of the load list and what its module says of itself.
struct PlanCandidate
{
    QString path;
    int line; ///< in the load list
    int column;
    ModuleProbe probe;
};

/// What a start-up with these modules will do.
struct StartPlan
{
    struct Module
    {
        QString path;
        QString name; ///< as its module object answers it
        int id;       ///< that it is entered with
        int moduleType;
        int parts;
    };
    struct Refused
    {
        QString path;
        Refusal reason; ///< None for a module that cannot be asked
    };
    /// A module's initialization, or a stage when `module` is negative.
    struct Step
    {
        qsizetype module; ///< index into modules
        ESuStage stage;
        int parts; ///< -1 for a base module or a stage of the whole
    };

    HwESigGenFamily family = 0;
    QList<Module> modules; ///< by ascending id
    QList<Refused> refused;
    QList<Step> steps;
};

/// Follows the start-up's rules; with `gui` false the Gui pass is left out. Appends to `findings`, about
/// `fileName`: modules of other families, ids that occur twice, required modules that are missing. What the
/// probes have found is not repeated.
StartPlan makeStartPlan(const QString &fileName, const QList<PlanCandidate> &candidates,
                        HwESigGenFamily family, bool gui, Findings *findings);

/// One line a step, as the start-up itself writes it to its trace.
QStringList stepTexts(const StartPlan &plan);

/// For people: what is loaded, what is not, and the steps.
QString toText(const StartPlan &plan);

/// Members family, modules, refused, groups and steps.
QJsonObject toJson(const StartPlan &plan);

} // namespace Orvia
