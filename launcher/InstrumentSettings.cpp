#include "launcher/InstrumentSettings.h"

#include "platform/VQMProperties.h"

#include <QFileInfo>

namespace Orvia {

namespace {

/// The properties file that goes with a configuration; empty when there is none.
QString propertiesBeside(const QString &configuration)
{
    const QFileInfo file(configuration);
    const QString name = file.path() + '/' + file.completeBaseName() + ".ini";
    return QFileInfo::exists(name) ? name : QString();
}

} // namespace

QString loadProperties(const CommandLine &commandLine, const QString &configuration)
{
    const QString &given = commandLine.properties;
    const QString file = given.isEmpty() ? propertiesBeside(configuration) : given;
    QString error;
    if (!file.isEmpty() && !VQMProperties::load(file, &error))
        return "properties: " + error;
    return QString();
}

std::optional<HwESigGenFamily> instrumentFamily(const CommandLine &commandLine, QString *error,
                                                bool *isMissing)
{
    if (commandLine.family)
        return commandLine.family;
    const QString property = VQMProperties::getStringProperty("Instrument", "Family", QString(), 0, nullptr);
    if (isMissing != nullptr)
        *isMissing = property.isEmpty();
    const std::optional<HwESigGenFamily> family = parseFamily(property);
    if (property.isEmpty())
        *error =
            "the instrument family is not known: give --family BITS or set the property Instrument/Family";
    else if (!family)
        *error = "property Instrument/Family: " + property + ": not a bit set (decimal or 0x..., not 0)";
    return family;
}

} // namespace Orvia
