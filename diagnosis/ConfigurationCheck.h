#pragma once

#include "diagnosis/ConfigurationSections.h"
#include "diagnosis/StartPlan.h"

#include <QJsonObject>

#include <functional>
#include <optional>

namespace Orvia {

/// What to check, and how far.
struct CheckRequest
{
    QString file;
    bool probe = false;                    ///< run the modules, and plan the start-up
    std::optional<HwESigGenFamily> family; ///< the plan needs it
    bool gui = true;                       ///< plan with the Gui pass
    std::function<void(int number, int count, const QString &module)> progress; ///< may be empty
};

/// What the check of a configuration has found.
struct CheckReport
{
    struct Module
    {
        QString path;
        FileInspection inspection;
        std::optional<ModuleProbe> probe; ///< none when it was not asked for, or the file is no library
    };

    QString file;
    QString failure; ///< why the check could not be made; empty when it was
    Findings findings;
    ConfigurationContents contents;
    QList<Module> modules; ///< those of contents.files that exist and are ever loaded
    std::optional<StartPlan> plan;
};

/// Says everything that a start-up would skip, refuse or fail at: scans the file, lets the real readers read
/// it and compares, inspects the module files and, when asked to, probes the modules and plans the start-up.
/// The properties must be loaded and the hardware repository created. GUI thread.
CheckReport checkConfiguration(const CheckRequest &request);

/// One line: the file's name, "clean" or how many defects, files and notes.
QString summary(const CheckReport &report);

/// Members file, findings, files, languages, menu, modules, plan (null without one), defects and notes; and
/// failure when the check could not be made.
QJsonObject toJson(const CheckReport &report);

} // namespace Orvia
