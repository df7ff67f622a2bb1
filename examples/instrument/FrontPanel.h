#pragma once

#include "registry/VQMModuleContract.h"

namespace Orvia {

/// What the Gui module (id 7) offers to other modules: room on the front panel. The operations follow the
/// positions of the contract and pass C++ types, so that the modules of one instrument are built with one
/// compiler. All of them belong to the GUI thread.
class FrontPanel : public VQMDllModuleInterface
{
public:
    /// First number of the interface version; raised with every change that old callers do not survive.
    static constexpr int interfaceMajor = 2;

    /// The front panel of this instrument, not owned; null when there is none, or one with another interface.
    static FrontPanel *of(const VQMAnchorInterface *anchor)
    {
        VQMModuleInterface *module = anchor->guiModule;
        if (module == nullptr || module->getInterfaceVersion()->major != interfaceMajor)
            return nullptr;
        return static_cast<FrontPanel *>(module);
    }

    /// Shows `page` under its window title, which the panel follows (a page changes it with the language).
    /// The panel takes the page into its window but does not own it: whoever added it removes it before
    /// deleting it. Without a window (the GUI is disabled) nothing happens.
    virtual void addPage(QWidget *page) = 0; // 22
    /// The page has no parent afterwards. A page that is not there, or went with the window, is ignored.
    virtual void removePage(QWidget *page) = 0; // 23
};

} // namespace Orvia
