#pragma once

#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/ScpiRegistry.h"
#include "examples/instrument/SettingsDatabase.h"

#include <QPointer>
#include <QWidget>

namespace Orvia {

/// What a module brings in, one field for each part.
struct ExtensionContent
{
    /// Database: judges what is about to be set, as SettingsDatabase::Rule; null when everything goes.
    bool (*rule)(const SettingsDatabase &settings, SettingsMap *changed) = nullptr;
    ScpiTable commands; ///< Scpi
    /// Gui: the page, on the GUI thread; null for none.
    QWidget *(*createPage)(SettingsDatabase *settings) = nullptr;
};

/// A plug-in or loadable of this instrument: puts its rule into the database, its commands under remote
/// control and its page on the front panel, each when initialize() asks for the part, and takes all out
/// again. A part whose base module is missing stays away, the log says so.
///
/// initialize() runs on the GUI thread where the Gui part is asked for; terminate() and the destructor on any
/// other thread while the GUI thread serves events, or on the GUI thread.
class Extension : public ModuleBase<VQMPlugInDllModuleInterface>
{
public:
    Extension(int id, ExtensionContent content);
    /// Takes out what is there still: terminate() is for modules whose parts are all up.
    ~Extension() override;

    int initialize(VQMAnchorInterface *anchor, int parts) override;
    void terminate(VQMAnchorInterface *anchor) override;

private:
    bool addRule();
    bool addCommands();
    bool addPage();
    void removePage();
    void takeDown();

    const ExtensionContent m_content;
    VQMAnchorInterface *m_anchor = nullptr;
    int m_parts = 0; ///< that are up
    int m_rule = 0;  ///< 0 for none
    bool m_hasPage = false;
    QPointer<QWidget> m_page; ///< GUI thread; gone with the window when that goes first
};

} // namespace Orvia
