/// What the test modules that know the library call when they are asked to call back.

#include "Startup/VQMIntegrationStartup.h"
#include "platform/VQMProperties.h"
#include "registry/VQMModuleContract.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

/// Counts the modules that it can ask for their name, saves the properties if it is to, and wants the
/// shutdown in both ways that there are.
extern "C" void testModuleCallsBack()
{
    using namespace Orvia;
    if (std::getenv("VQM_TEST_SAVES") != nullptr) {
        VQMProperties::setStringProperty("Test", "filler", QString(100'000, 'x'), 0);
        QString error;
        const bool saved = VQMProperties::save(&error);
        std::fprintf(stderr, "saved: %s\n", saved ? "yes" : qPrintable(error));
        return;
    }
    VQMAnchorInterface *anchor = VQMMainStartupImplementation::anchorInterface;
    int answers = 0;
    for (VQMModuleInterface *module : {anchor->guiModule, anchor->scpiModule, anchor->databaseModule})
        answers += module != nullptr && module->getModuleName() != nullptr ? 1 : 0;
    for (VQMModuleInterface *module : *anchor->plugInInterfaces)
        answers += module->getModuleName() != nullptr ? 1 : 0;
    std::fprintf(stderr, "called back: %d\n", answers);
    VQMIntegrationStartup::setAbortFlag(true);
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}
