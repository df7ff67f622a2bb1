#include "xmlconfig/RegKeyElement.h"

#include "platform/VQMProperties.h"

#include <QXmlAttributes>

namespace Orvia {

namespace {

struct RegKey
{
    const char *type;
    void (*apply)(const QString &value);
};

constexpr RegKey regKeys[] = {
    {"defaultMaster", &VQMProperties::setDefaultMasterKey},
    {"preferedMaster", &VQMProperties::setPreferedMasterKey},
    {"requiredMemoryMB", &VQMProperties::setRequiredMemoryMb},
};

} // namespace

bool hasReadableAttributes(const QXmlAttributes &attributes)
{
    return attributes.count() >= 1 && attributes.count() <= 32;
}

bool applyRegKey(const QXmlAttributes &attributes)
{
    const int type = attributes.index(QStringLiteral("type"));
    const int value = attributes.index(QStringLiteral("value"));
    if (type < 0 || value < 0)
        return false;
    for (const RegKey &key : regKeys) {
        if (attributes.value(type) != QLatin1String(key.type))
            continue;
        key.apply(attributes.value(value));
        return true;
    }
    return false;
}

} // namespace Orvia
