#include "examples/instrument/ScpiDll/ScpiModule.h"

#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/SelfTest/SelfTestChecks.h"
#include "platform/VQMProperties.h"

#include <utility>

namespace Orvia {

namespace {

/// What initialize() returns when the module cannot do its work.
enum ScpiModuleStatus
{
    NoDatabase = 60001,
    InvalidAddress = 60002,
    CannotListen = 60003,
};

QString property(const char *section, const char *key, const char *defaultValue)
{
    return VQMProperties::getStringProperty(section, key, defaultValue, 0, nullptr);
}

/// Manufacturer, model, serial number and firmware version.
std::string identification()
{
    const VQMModuleInfo *info = VQMGetModuleInfo();
    return QString("%1,%2,%3,%4.%5.%6")
        .arg(property("Instrument", "Manufacturer", "Orvia"), property("Instrument", "Model", "SG-100"),
             property("Instrument", "Serial", "0"))
        .arg(info->major)
        .arg(info->minor)
        .arg(info->build)
        .toStdString();
}

} // namespace

ScpiModule::ScpiModule(int id) : ModuleBase(id) {}

ScpiModule::~ScpiModule() = default;

int ScpiModule::initialize(VQMAnchorInterface *anchor, int /*parts*/)
{
    registerScpiErrors();
    SettingsDatabase *settings = SettingsDatabase::of(anchor);
    if (settings == nullptr)
        return logError("SCPI: no settings database, remote control stays off", NoDatabase);
    m_instrument.emplace(ScpiInstrument{*settings, identification(),
                                        [settings] { return runSelfTest(*settings).faults; }, m_extensions});
    return listen();
}

void ScpiModule::terminate(VQMAnchorInterface * /*anchor*/)
{
    m_server.reset();
    m_instrument.reset();
    withdrawScpiErrors();
}

void ScpiModule::addCommands(const void *owner, ScpiTable table)
{
    m_extensions.add(owner, std::move(table));
}

void ScpiModule::removeCommands(const void *owner)
{
    m_extensions.remove(owner);
}

int ScpiModule::listen()
{
    const QString addressText = property("Scpi", "address", "127.0.0.1");
    const int port = VQMProperties::getIntegerProperty("Scpi", "port", 5025, 0);
    const QHostAddress address(addressText);
    if (address.isNull() || port < 0 || port > 65535)
        return logError(QString("SCPI: not an address: %1 port %2").arg(addressText).arg(port),
                        InvalidAddress);

    m_server = std::make_unique<ScpiServer>(*m_instrument);
    QString error;
    if (!m_server->listen(address, static_cast<quint16>(port), &error)) {
        m_server.reset();
        return logError(
            QString("SCPI: cannot listen on %1 port %2: %3").arg(addressText).arg(port).arg(error),
            CannotListen);
    }
    log(QString("SCPI: listening on %1 port %2").arg(m_server->address().toString()).arg(m_server->port()));
    return 0;
}

} // namespace Orvia

VQM_MODULE(Orvia::ScpiModule)
