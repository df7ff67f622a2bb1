#include "diagnosis/ConfigurationElements.h"

namespace Orvia {

namespace {

constexpr const char *skipped = "the element is skipped";
constexpr const char *emptyKey = "its key has an empty piece";
constexpr AttributeRule entryId = {"id", skipped, emptyKey};
constexpr AttributeRule entryLabel = {"label", "the entry has no text"};

constexpr ElementRule elementRules[] = {
    {"Root", {""}, true, {}},
    {"Instrument", {"Root"}, true, {}},
    {"Module",
     {"Instrument"},
     false,
     {{"name", "the section is read as the start-up's", "the section is read by nobody here"}}},
    {"ModuleLoadList", {"Module"}, false, {{"version"}}},
    {"Startup", {"Module"}, false, {{"version"}}},
    {"Directory",
     {"ModuleLoadList", "Languages"},
     false,
     {{"nameLinux", "the folder given before it, if any, stays in effect", "it names no folder"}}},
    {"File", {"ModuleLoadList/Directory"}, false, {{"name", skipped}, {"option"}}},
    {"RegKey", {"Startup"}, false, {{"type", skipped}, {"value", skipped, "the key is set to nothing"}}},
    {"Menu", {"Startup"}, false, {}},
    {"Group", {"Menu"}, false, {entryId, entryLabel}},
    {"SubGroup", {"Group"}, false, {entryId, entryLabel}},
    {"Item", {"SubGroup", "Group"}, false, {entryId, entryLabel}},
    {"Languages", {"Startup"}, false, {}},
    {"Language",
     {"Languages/Directory"},
     false,
     {{"name", skipped, "the language has no name"}, {"path", skipped}}},
};

} // namespace

const ElementRule *elementRule(const QString &name)
{
    for (const ElementRule &rule : elementRules) {
        if (name == QLatin1String(rule.name))
            return &rule;
    }
    return nullptr;
}

bool isInPlace(const ElementRule &rule, const QStringList &open)
{
    const QString path = open.join('/');
    for (const char *place : rule.places) {
        if (place != nullptr && (path == QLatin1String(place) || path.endsWith('/' + QString(place))))
            return true;
    }
    return false;
}

bool isReadOutOfPlace(const ElementRule &rule, const QStringList &open)
{
    const QString name = rule.name;
    if (name == "File")
        return open.size() >= 2 && open[open.size() - 2] == "ModuleLoadList";
    if (name == "Language")
        return !open.isEmpty() && open.last() == "Directory";
    // The sections only have to be around what is read, and any Directory changes the module files' folder.
    return QStringList{"Root", "Instrument", "Module", "ModuleLoadList", "Startup", "Directory"}.contains(
        name);
}

QString placesText(const ElementRule &rule)
{
    if (*rule.places[0] == '\0')
        return QStringLiteral("nothing");
    QString text = rule.places[0];
    if (rule.places[1] != nullptr)
        text += QStringLiteral(" or ") + rule.places[1];
    return text;
}

} // namespace Orvia
