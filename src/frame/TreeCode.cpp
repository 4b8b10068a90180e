#include "frame/TreeCode.h"

namespace Qel {

QString TreeCode::Propose(bool topLevel, const QString &next)
{
    if (!topLevel)
        return next.right(StepLength).rightJustified(StepLength, u'0');
    return next.size() > TopLength ? QString() : next.rightJustified(TopLength, u'0');
}

TreeCode::Parts TreeCode::Split(const QString &code)
{
    const qsizetype parent = code.size() <= TopLength ? 0 : code.size() - StepLength;
    return {code.left(parent), code.mid(parent)};
}

} // namespace Qel
