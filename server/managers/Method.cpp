#include "managers/Method.h"

#include "managers/RuleManager.h"
#include "managers/UniProduct.h"
#include "managers/UniUnion.h"
#include "managers/UniUnionOrg.h"

namespace Qel::Managers {

PostedRow::PostedRow(const Wire::NamedValues &values)
{
    values_.reserve(values.size());
    for (const auto &[name, value] : values)
        values_.insert(name, value);
}

QStringList PostedRow::Of(const QStringList &names) const
{
    QStringList values;
    values.reserve(names.size());
    for (const QString &name : names)
        values.append((*this)[name]);
    return values;
}

const QList<Method> &Methods()
{
    static const QList<Method> methods =
        UniUnionMethods() + UniUnionOrgMethods() + UniProductMethods() + RuleManagerMethods();
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
