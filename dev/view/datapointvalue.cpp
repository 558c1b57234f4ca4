#include "datapointvalue.h"

#include <cmath>
#include <limits>

namespace DataPointValue {

int rounded(const QVariant &value)
{
    // Safely inside qint64, so qRound64 cannot overflow.
    constexpr double kLimit = 9.0e18;
    switch (static_cast<int>(value.userType())) {
    case QMetaType::Double:
    case QMetaType::Float: {
        const double d = value.toDouble();
        if (!std::isfinite(d) || std::fabs(d) >= kLimit)
            return 0;
        return static_cast<int>(qRound64(d));
    }
    default: {
        bool ok = false;
        const qlonglong n = value.toLongLong(&ok);
        return ok ? static_cast<int>(n) : 0;
    }
    }
}

int rounded(const QMap<int, QVariant> &map, int id)
{
    return rounded(map.value(id));
}

int truncated(const QVariant &value)
{
    if (!value.isValid())
        return 0;
    const int type = value.userType();
    if (type == QMetaType::Double || type == QMetaType::Float)
        return truncatedFloat(value.toFloat());
    bool ok = false;
    const qlonglong n = value.toLongLong(&ok);
    if (!ok)
        return 0;
    return int(qBound<qlonglong>(std::numeric_limits<int>::min(), n, std::numeric_limits<int>::max()));
}

int truncatedFloat(float value)
{
    // 2^31 is exact in float; the largest float below it still fits an int.
    constexpr float kIntRangeEnd = 2147483648.0f;
    if (std::isnan(value))
        return 0;
    if (value >= kIntRangeEnd)
        return std::numeric_limits<int>::max();
    if (value < -kIntRangeEnd)
        return std::numeric_limits<int>::min();
    return int(value);
}

} // namespace DataPointValue
