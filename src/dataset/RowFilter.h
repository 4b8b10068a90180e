#pragma once

#include "dataset/RowTable.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace Qel {

/// A filter text as something that rows can be asked. Two steps: parsed without knowing the
/// fields, then bound to them. The language stands at ClientDataSet::SetFilter.
class RowFilter
{
public:
    RowFilter() = default;

    static RowFilter Parse(const QString &text); ///< throws EDataSetError that names the place

    /// Looks the fields up; throws EDataSetError if one is not there.
    void Bind(const FieldDefs &fields);

    bool IsEmpty() const { return nodes_.empty(); } ///< everything passes
    bool Uses(int field) const;
    bool Passes(const RowTable &table, quint32 row) const;

    /// The rows, of those not deleted, that pass; ascending.
    std::vector<quint32> PassingRows(const RowTable &table) const;

private:
    friend class RowFilterParser;

    enum class Kind : quint8 { Comparison, And, Or, Not };
    enum class Operator : quint8 {
        Equal,
        NotEqual,
        Less,
        LessOrEqual,
        Greater,
        GreaterOrEqual,
        Contains
    };
    enum class Literal : quint8 { Text, Number, Null };

    struct Node
    {
        Kind kind = Kind::Comparison;
        int left = -1;  ///< of And, Or, Not: position in nodes_
        int right = -1; ///< of And, Or

        QString fieldName = {};
        int field = -1;
        bool numericField = false;
        Operator op = Operator::Equal;
        Literal literal = Literal::Text;
        QByteArray value = {};   ///< UTF-8
        QByteArray decimal = {}; ///< the value as a number in canonical form; empty if it is none
    };

    bool Evaluate(const Node &node, const RowTable &table, quint32 row) const;
    static bool Compare(const Node &node, const RowTable &table, quint32 row);

    std::vector<Node> nodes_; ///< the root is the last
};

/// Looks for a part of a text in one field, row by row of those not deleted. Searches the column's
/// bytes as one text while they are as loaded. An empty part is in every row. The table must not
/// change meanwhile.
class ContainsSearch
{
public:
    ContainsSearch(const RowTable &table, int field, QByteArrayView part)
        : table_(table)
        , field_(field)
        , part_(part)
    {
    }

    qint64 Next(quint32 from) const; ///< first row at or after `from` that has it; -1: none

private:
    quint32 NextAsLoaded(quint32 from) const;

    const RowTable &table_;
    const int field_;
    const QByteArrayView part_;
};

} // namespace Qel
