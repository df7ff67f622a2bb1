#include "platform/HwAbstractionLayer.h"

#include "platform/VQMProperties.h"
#include "platform/VQMUtility.h"
#include "platform/host/StandardError.h"

#include <QString>
#include <QStringList>

#include <cstdio>
#include <set>

namespace Orvia {

VQMHwRepository *HwAbstractionLayer::m_repository = nullptr;

namespace {

QString property(const QString &key)
{
    return VQMProperties::getStringProperty("Hardware", key, QString(), 0, nullptr);
}

QStringList names(const QString &key)
{
    QStringList list;
    for (const QString &name : property(key).split('|'))
        if (!name.trimmed().isEmpty())
            list.append(name.trimmed());
    return list;
}

class HostUnit final : public VQMHwUnit
{
public:
    void setReady(int ready) override
    {
        char text[48];
        std::snprintf(text, sizeof(text), "hardware unit: ready %d", ready);
        VQMUtility::traceMessage(text);
    }
};

/// Read from the properties once; constant afterwards, and so for any thread.
class HostRepository final : public VQMHwRepository
{
public:
    void read()
    {
        m_code = VQMProperties::getIntegerProperty("Hardware", "code", 0, 0);
        m_knownOptions = names("knownOptions");
        m_installedOptions.clear();
        for (const QString &name : names("installedOptions")) {
            const int option = findOption(name.toLatin1().constData(), 0);
            if (option == unknownOption)
                writeStandardError(
                    QStringLiteral("Hardware/installedOptions: option %1 is not in Hardware/knownOptions")
                        .arg(name));
            else
                m_installedOptions.insert(option);
        }
    }

    int findOption(const char *name, int /*index*/) override
    {
        const auto place = static_cast<int>(m_knownOptions.indexOf(QString::fromLatin1(name)));
        if (place < 0)
            return unknownOption;
        return place < unknownOption ? place : place + 1;
    }

    bool hasOption(unsigned short option, int /*index*/) override
    {
        return m_installedOptions.count(option) != 0;
    }

    int code() override { return m_code; }
    VQMHwUnit *unit(int /*index*/) override { return &m_unit; }

private:
    int m_code = 0;
    QStringList m_knownOptions;
    std::set<int> m_installedOptions;
    HostUnit m_unit;
};

} // namespace

void HwAbstractionLayer::createHostRepository()
{
    static HostRepository &repository = *new HostRepository;
    repository.read();
    m_repository = &repository;
}

} // namespace Orvia
