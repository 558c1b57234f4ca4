#ifndef DATAPOINTVALUE_H
#define DATAPOINTVALUE_H

#include <QMap>
#include <QVariant>

// Integer readings of data point values. The values arrive from the UPS agent
// over the network, so any QVariant type may turn up; none of these functions
// overflows or fails on one. The forms differ in how they treat fractional
// and out-of-range numbers, hence two families.
namespace DataPointValue {

// Nearest integer. Non-numeric values, NaN, infinities and floating-point
// values beyond +-9e18 read as 0; other integers keep their low 32 bits.
int rounded(const QVariant &value);
// rounded() of the value stored under `id`; a missing id reads as 0.
int rounded(const QMap<int, QVariant> &map, int id);

// Integer part (toward zero) with floating-point values taken at float
// precision; integers outside the int range saturate, non-numeric values
// read as 0.
int truncated(const QVariant &value);
// Integer part of `value` like a C cast, saturating at the int range instead
// of overflowing; NaN reads as 0.
int truncatedFloat(float value);

} // namespace DataPointValue

#endif // DATAPOINTVALUE_H
