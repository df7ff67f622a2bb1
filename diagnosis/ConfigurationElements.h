#pragma once

#include <QString>
#include <QStringList>

namespace Orvia {

/// An attribute that an element may carry.
struct AttributeRule
{
    const char *name = nullptr; ///< null: an empty row
    /// What happens without it; null when it may be left out. An attribute that may not must not be empty
    /// either.
    const char *ifMissing = nullptr;
    const char *ifEmpty = nullptr; ///< what happens when it is empty; null for the same
};

/// What a configuration may hold of one kind of element.
struct ElementRule
{
    const char *name;
    const char *places[2]; ///< the elements that it belongs inside: "Parent" or "Grandparent/Parent"
    bool isFree;           ///< further attributes mean nothing and are no matter
    AttributeRule attributes[3];
};

/// Null for an element that no reader knows.
const ElementRule *elementRule(const QString &name);

/// Whether the element stands where it belongs; `open` are the elements around it, outermost first.
bool isInPlace(const ElementRule &rule, const QStringList &open);

/// Whether the readers take the element all the same where it does not belong.
bool isReadOutOfPlace(const ElementRule &rule, const QStringList &open);

/// "ModuleLoadList/Directory", "SubGroup or Group".
QString placesText(const ElementRule &rule);

} // namespace Orvia
