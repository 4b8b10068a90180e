#include "managers/Method.h"

#include "managers/BusDataRollBack.h"
#include "managers/NoticManager.h"
#include "managers/OrgAffiliation.h"
#include "managers/RuleManager.h"
#include "managers/StockManager.h"
#include "managers/TraBuyCatalog.h"
#include "managers/UniPrice.h"
#include "managers/UniProduct.h"
#include "managers/UniUnion.h"
#include "managers/UniUnionOrg.h"
#include "managers/UniUser.h"

#include <algorithm>

namespace Qel::Managers {

QString PostedRow::operator[](const QString &name) const
{
    for (const auto &[posted, value] : values_)
        if (posted == name)
            return value;
    return {};
}

bool PostedRow::Has(const QString &name) const
{
    return std::any_of(values_.begin(), values_.end(),
                       [&](const Wire::NamedValue &value) { return value.first == name; });
}

QStringList PostedRow::Of(const QStringList &names) const
{
    QStringList values;
    values.reserve(names.size());
    for (const QString &name : names)
        values.append((*this)[name]);
    return values;
}

QList<Method> MethodsOfKeys(const QString &manager, const QString &table, const QStringList &keys,
                            const QString &echo,
                            const QList<std::pair<QString, MethodFunction>> &methods)
{
    QList<Method> all;
    for (const auto &[name, run] : methods)
        all.append({.manager = manager,
                    .name = name,
                    .table = table,
                    .parameters = keys,
                    .key = keys,
                    .run = run,
                    .echo = {echo}});
    return all;
}

const QList<Method> &Methods()
{
    static const QList<Method> methods =
        UniUnionMethods() + UniUnionOrgMethods() + UniProductMethods() + RuleManagerMethods() +
        UniUserMethods() + BusDataRollBackMethods() + UniPriceMethods() + OrgAffiliationMethods() +
        StockManagerMethods() + NoticManagerMethods() + TraBuyCatalogMethods();
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
