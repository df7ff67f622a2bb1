#include "Startup/VQMMainStartupImplementation.h"
#include "xmlconfig/CSuXmlEvntHdlr.h"
#include "xmlconfig/RunReader.h"

namespace Orvia {

void VQMMainStartupImplementation::parseLoadList()
{
    CSuXmlEvntHdlr reader;
    reader.setStartup(this);
    reader.useElementTable();
    runReader(&reader, loadListName); // findModules() judges by the files that were added
}

} // namespace Orvia
