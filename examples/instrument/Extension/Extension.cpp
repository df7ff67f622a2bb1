#include "examples/instrument/Extension/Extension.h"

#include "examples/instrument/FrontPanel.h"
#include "platform/VQMUtility.h"

#include <utility>

namespace Orvia {

Extension::Extension(int id, ExtensionContent content) : ModuleBase(id), m_content(std::move(content)) {}

Extension::~Extension()
{
    takeDown();
}

int Extension::initialize(VQMAnchorInterface *anchor, int parts)
{
    m_anchor = anchor;
    const struct
    {
        int part;
        bool (Extension::*bringUp)();
        const char *name;
    } steps[] = {
        {VQMDatabasePart, &Extension::addRule, "Database"},
        {VQMScpiPart, &Extension::addCommands, "Scpi"},
        {VQMGuiPart, &Extension::addPage, "Gui"},
    };
    const int declaredParts = VQMGetModuleInfo()->parts;
    for (const auto &[part, bringUp, name] : steps) {
        if ((parts & declaredParts & ~m_parts & part) == 0)
            continue;
        m_parts |= part;
        const bool isThere = (this->*bringUp)();
        log(QString("%1: %2 part %3").arg(getModuleName(), name, isThere ? "is up" : "has nowhere to go"));
    }
    return 0;
}

void Extension::terminate(VQMAnchorInterface * /*anchor*/)
{
    takeDown();
}

bool Extension::addRule()
{
    SettingsDatabase *settings = SettingsDatabase::of(m_anchor);
    if (settings != nullptr && m_content.rule != nullptr)
        m_rule = settings->addRule(
            [rule = m_content.rule, settings](SettingsMap *changed) { return rule(*settings, changed); });
    return settings != nullptr;
}

bool Extension::addCommands()
{
    ScpiRegistry *registry = ScpiRegistry::of(m_anchor);
    if (registry != nullptr)
        registry->addCommands(this, m_content.commands);
    return registry != nullptr;
}

bool Extension::addPage()
{
    SettingsDatabase *settings = SettingsDatabase::of(m_anchor);
    FrontPanel *panel = FrontPanel::of(m_anchor);
    if (!VQMUtility::isGuiEnabled() || settings == nullptr || panel == nullptr)
        return false;
    m_page = m_content.createPage(settings);
    m_hasPage = true;
    panel->addPage(m_page);
    return true;
}

void Extension::removePage()
{
    if (FrontPanel *panel = FrontPanel::of(m_anchor); panel != nullptr && m_page != nullptr)
        panel->removePage(m_page);
    delete m_page;
}

void Extension::takeDown()
{
    if (std::exchange(m_hasPage, false))
        VQMUtility::runOnGuiThread([this] { removePage(); });
    const int parts = std::exchange(m_parts, 0);
    if (ScpiRegistry *registry = (parts & VQMScpiPart) != 0 ? ScpiRegistry::of(m_anchor) : nullptr)
        registry->removeCommands(this);
    const int rule = std::exchange(m_rule, 0);
    if (SettingsDatabase *settings = rule != 0 ? SettingsDatabase::of(m_anchor) : nullptr)
        settings->removeRule(rule);
    if (parts != 0)
        log(QString("%1: taken down").arg(getModuleName()));
}

} // namespace Orvia
