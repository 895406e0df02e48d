#include "shrink/ShrinkResult.h"

ShrinkResult ShrinkResult::kept(QByteArrayView input, const QString &reason)
{
    ShrinkResult result;
    result.bytes = input.toByteArray();
    result.before = result.after = input.size();
    result.reason = reason;
    return result;
}

ShrinkResult ShrinkResult::replaced(QByteArrayView input, const QByteArray &output)
{
    ShrinkResult result;
    result.bytes = output;
    result.before = input.size();
    result.after = output.size();
    result.changed = true;
    return result;
}
