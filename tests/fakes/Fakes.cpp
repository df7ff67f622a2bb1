#include "tests/fakes/Fakes.h"

#include "platform/Debug.h"
#include "platform/Export.h"
#include "platform/VQMProgressBar.h"
#include "platform/VQMProperties.h"
#include "xmlconfig/SMenuTree.h"

#include <QStringList>

#include <algorithm>

FakeCalls &calls = *new FakeCalls;
FakeAnswers answers;
FakeHandovers handovers;
std::vector<std::pair<int, const Orvia::CErrorManager::SErrorDefinition *>> registeredErrors;

void FakeCalls::add(const std::string &service, const std::string &text)
{
    all.push_back({service, text});
    if (onCall)
        onCall({service, text});
}

std::vector<std::string> FakeCalls::of(std::initializer_list<const char *> services) const
{
    std::vector<std::string> texts;
    for (const Call &call : all) {
        if (std::find(services.begin(), services.end(), call.service) != services.end())
            texts.push_back(call.text);
    }
    return texts;
}

/// What the test modules log.
extern "C" VQM_EXPORT void testModuleLog(const char *line)
{
    calls.add("module", line);
}

namespace Orvia {

namespace {

int nextBarId = 0;

class Hook : public VQMErrorManagerHook
{
public:
    void alert(const QString &caption, const QString &text) override
    {
        calls.add("alert", (caption + " | " + text).toStdString());
    }
} hook;

class Repository final : public VQMHwRepository
{
public:
    int findOption(const char *name, int index) override
    {
        calls.add("option", std::string("find ") + name + (index == 0 ? "" : ", wrong index"));
        const auto found = answers.knownOptions.find(name);
        return found != answers.knownOptions.end() ? found->second : unknownOption;
    }
    bool hasOption(unsigned short option, int index) override
    {
        calls.add("option", "has " + std::to_string(option) + (index == 0 ? "" : ", wrong index"));
        const auto &installed = answers.installedOptions;
        return std::find(installed.begin(), installed.end(), option) != installed.end();
    }
    int code() override { return 0; }
    VQMHwUnit *unit(int) override { return nullptr; }
} repository;

std::string text(const QString &string)
{
    return string.toStdString();
}

} // namespace

VQMErrorManagerHook::~VQMErrorManagerHook() = default;
VQMHwRepository *HwAbstractionLayer::m_repository = nullptr;

bool Debug::isActive(int moduleId, int level, int kind)
{
    return moduleId == 1 && kind == 0 && level <= answers.debugLevel;
}

void Debug::println(int moduleId, int kind, const QString &message, int level, int code, const char *file,
                    int line)
{
    const bool plain = moduleId == 1 && kind == 0 && file == nullptr && line == -1;
    const std::string prefix = "[" + std::to_string(level) + " " + std::to_string(code) + "] ";
    calls.add("debug",
              (plain ? "" : "not as agreed: ") + (level == 3 && code == 0 ? "" : prefix) + text(message));
}

void Debug::debugMessageBox(const QString &caption, const QString &message, bool modal, int severity,
                            int buttons, int reserved1, int reserved2)
{
    std::string line = text(caption) + " | " + text(message) + " |";
    for (int argument : {static_cast<int>(modal), severity, buttons, reserved1, reserved2})
        line += " " + std::to_string(argument);
    calls.add("box", line);
}

void CErrorManager::registerErrors(const SErrorDefinition *table, int registrationId)
{
    registeredErrors.emplace_back(registrationId, table);
}

void CErrorManager::signal(int code, const QString &detail)
{
    calls.add("error", std::to_string(code) + " " + text(detail));
}

void CErrorManager::destroyAnnouncement(unsigned int id)
{
    calls.add("error", "destroy " + std::to_string(id));
}

void CErrorManager::destroyAllAnnouncements()
{
    calls.add("error", "destroy all");
}

CErrorManager *ErrorManager()
{
    static CErrorManager manager;
    return &manager;
}

bool VQMProgressBar::isProgressHandlerInstalled()
{
    return answers.progressHandlerInstalled;
}

int VQMProgressBar::createProgressBar(const char *title, bool)
{
    calls.add("progress", "new " + std::to_string(nextBarId) + " " + title);
    return nextBarId++;
}

void VQMProgressBar::updateProgressBar(int id, int percent, bool)
{
    calls.add("progress", std::to_string(id) + ": " + std::to_string(percent));
}

void VQMProgressBar::removeProgressBar(int id, bool)
{
    calls.add("progress", "removed " + std::to_string(id));
}

void VQMProgressBar::removeButton(int id, bool)
{
    calls.add("progress", "button " + std::to_string(id) + " removed");
}

QString VQMProperties::getStringProperty(const QString &section, const QString &key,
                                         const QString &defaultValue, int layer, bool *found)
{
    const std::string name = text(section) + "/" + text(key);
    const bool plain = layer == 0 && found == nullptr;
    calls.add("asked", name + ", else " + text(defaultValue) + (plain ? "" : ", not as agreed"));
    const auto property = answers.properties.find(name);
    return property != answers.properties.end() ? property->second : defaultValue;
}

int VQMProperties::getIntegerProperty(const QString &section, const QString &key, int defaultValue, int)
{
    return section == "StartupProcess" && key == "RequiredMemoryMB" ? answers.requiredMemoryMb : defaultValue;
}

void VQMProperties::setIntegerProperty(const QString &section, const QString &key, int value, int layer)
{
    calls.add("property", text(section) + "/" + text(key) + " = " + std::to_string(value) +
                              (layer == 1 ? "" : ", wrong layer"));
}

void VQMProperties::setDefaultMasterKey(const QString &value)
{
    calls.add("property", "DefaultMaster = " + text(value));
}

void VQMProperties::setPreferedMasterKey(const QString &value)
{
    calls.add("property", "PreferedMaster = " + text(value));
}

void VQMProperties::setRequiredMemoryMb(const QString &value)
{
    calls.add("property", "RequiredMemoryMB = " + text(value));
}

void VQMUtility::traceMessage(const char *line)
{
    calls.add("trace", line);
}

bool VQMUtility::isTracing()
{
    return answers.tracing;
}

void VQMUtility::setStartupComplete(int parts)
{
    calls.add("complete", std::to_string(parts));
}

int VQMUtility::determineAvailableVirtualMemoryMb()
{
    return answers.availableMemoryMb;
}

bool VQMUtility::isGuiEnabled()
{
    return answers.guiEnabled;
}

void VQMUtility::setMenuDescription(std::map<QString, SMenuTree *> *menu)
{
    calls.add("handover", "menu");
    handovers.menus.push_back(menu);
}

void VQMUtility::setLanguageList(std::map<QString, QString> *languages)
{
    calls.add("handover", "languages");
    handovers.languages.push_back(languages);
}

int VQMUtility::getMenuLevelIndicator(int level)
{
    return level == 0 ? 1'000'000 : level == 1 ? 2'000 : -1;
}

QString VQMUtility::buildString(const QString &p1, const QString &p2, const QString &p3, const QString &p4,
                                const QString &p5, const QString &p6, const QString &p7, const QString &p8,
                                const QString &p9, const QString &p10, const QString &p11, const QString &p12,
                                const QString &p13, const QString &p14, const QString &p15)
{
    QStringList pieces = {p1, p2, p3, p4, p5, p6, p7, p8, p9, p10, p11, p12, p13, p14, p15};
    pieces.removeIf([](const QString &piece) { return piece.isNull(); });
    return pieces.join(':');
}

VQMErrorManagerHook *VQMUtility::getErrorManagerHook()
{
    return answers.hookInstalled ? &hook : nullptr;
}

} // namespace Orvia

void resetFakes()
{
    calls = FakeCalls();
    answers = FakeAnswers();
    for (auto *menu : handovers.menus) {
        for (const auto &[key, node] : *menu)
            delete node;
        delete menu;
    }
    for (auto *languages : handovers.languages)
        delete languages;
    handovers = FakeHandovers();
    Orvia::nextBarId = 0;
    Orvia::HwAbstractionLayer::m_repository = &Orvia::repository;
}
