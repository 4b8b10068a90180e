#include "managers/Method.h"

#include "managers/UniUnion.h"
#include "managers/UniUnionOrg.h"

namespace Qel::Managers {

PostedRow::PostedRow(const Wire::NamedValues &values)
{
    values_.reserve(values.size());
    for (const auto &[name, value] : values)
        values_.insert(name, value);
}

const QList<Method> &Methods()
{
    static const QList<Method> methods = UniUnionMethods() + UniUnionOrgMethods();
    return methods;
}

const Method *FindMethod(const QString &manager, const QString &name)
{
    for (const Method &method : Methods())
        if (method.manager == manager && method.name == name)
            return &method;
    return nullptr;
}

} // namespace Qel::Managers
