#include "sql/Joins.h"

#include <QString>

#include <algorithm>
#include <map>
#include <set>

using namespace Qt::StringLiterals;

namespace Qel::Sql {

namespace {

using RelationSet = std::set<const Relation *>;

RelationSet OthersIn(const Conjunct &conjunct, const Query &query)
{
    RelationSet found;
    for (const auto &relation : query.relations) {
        if (relation.get() != conjunct.marked && conjunct.named.contains(relation.get()))
            found.insert(relation.get());
    }
    return found;
}

} // namespace

void PlaceConditions(Query &query, std::vector<Conjunct> conjuncts)
{
    std::map<const Relation *, RelationSet> needs; // of each outer relation
    for (const Conjunct &conjunct : conjuncts) {
        if (!conjunct.marked)
            continue;
        if (RelationSet others = OthersIn(conjunct, query); !others.empty())
            needs[conjunct.marked].merge(others);
    }

    qsizetype firstMark = 0;
    for (Conjunct &conjunct : conjuncts) {
        if (!needs.contains(conjunct.marked)) {
            query.where.push_back(std::move(conjunct.condition));
            continue;
        }
        firstMark = firstMark == 0 ? conjunct.position : firstMark;
        const auto relation =
            std::find_if(query.relations.begin(), query.relations.end(),
                         [&](const auto &candidate) { return candidate.get() == conjunct.marked; });
        (*relation)->outer = true;
        (*relation)->on.push_back(std::move(conjunct.condition));
    }

    RelationSet placed;
    const auto place = [&](const Relation *relation) {
        query.joinOrder.push_back(relation);
        placed.insert(relation);
    };
    for (const auto &relation : query.relations) {
        if (!relation->outer)
            place(relation.get());
    }
    while (placed.size() < query.relations.size()) {
        const auto next =
            std::find_if(query.relations.begin(), query.relations.end(), [&](const auto &relation) {
                const RelationSet &others = needs[relation.get()];
                return !placed.contains(relation.get()) &&
                       std::includes(placed.begin(), placed.end(), others.begin(), others.end());
            });
        if (next == query.relations.end())
            throw ESqlError("sql.syntax", firstMark, u"外连接（+）互相循环"_s);
        place(next->get());
    }
}

} // namespace Qel::Sql
