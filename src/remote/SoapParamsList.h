#pragma once

#include "dataset/QelError.h"
#include "wire/Wire.h"

#include <QList>
#include <QString>

#include <optional>

namespace Qel {

/// A parameter list was used out of turn (AddParam or PostParams without NewParams).
class EParamsError : public EQelError
{
public:
    using EQelError::EQelError;
};

/// An ordered list of rows of named text values: the rows to be posted, or the results of a post.
/// Names are database column names, matched without regard to case; the values of a row keep the
/// order in which they were added, a name added again replaces its value where it stands.
/// A row of results carries a result code besides ("1", "0", "-1", "-2").
class TSoapParamsList
{
public:
    void Clear();     ///< drops all rows and the current one
    void NewParams(); ///< starts an empty current row; one that was not posted is dropped
    void AddParam(const QString &name, const QString &value);
    void PostParams(); ///< closes the current row and appends it

    int Count() const;                                        ///< closed rows
    QString GetParamValue(int index, QStringView name) const; ///< empty if there is none
    QString GetResultCode(int index) const;                   ///< empty if there is none

    QList<Wire::NamedValues> Rows() const;          ///< the closed rows, in order
    void SetResult(const Wire::PostAnswer &answer); ///< replaces everything

private:
    QList<Wire::ResultRow> rows_;
    std::optional<Wire::NamedValues> current_;
};

} // namespace Qel
