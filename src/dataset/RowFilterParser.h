#pragma once

#include "dataset/RowFilter.h"

namespace Qel {

/// Reads a filter text into the nodes of a RowFilter, by recursive descent.
class RowFilterParser
{
public:
    explicit RowFilterParser(const QString &text)
        : text_(text)
    {
    }

    RowFilter Parse();

private:
    using Node = RowFilter::Node;

    int ParseOr(int depth);
    int ParseAnd(int depth);
    int ParseNot(int depth);
    int ParseComparison();
    RowFilter::Operator ParseOperator();
    void ParseLiteral(Node &node);

    int Add(Node node);
    void SkipBlanks();
    bool TakeWord(QStringView word); ///< a whole word, in any case
    bool TakeSign(QStringView sign);
    QStringView PeekWord() const;
    [[noreturn]] void Fail(const QString &what) const;

    const QString &text_;
    qsizetype at_ = 0;
    RowFilter filter_;
};

} // namespace Qel
